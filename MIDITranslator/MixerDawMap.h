#ifndef MIXERDAWMAP_H
#define MIXERDAWMAP_H
#endif
