#ifndef TRACESILENCER_H
#define TRACESILENCER_H

#include <iostream>

// Keeps the translator's trace lines, meant for the program's log, off
// standard output while it lives: the checker says what they say in its own
// words, once. Restoring the stream also clears the failed state that writing
// to no buffer left behind.
class cTraceSilencer
{
public:
    cTraceSilencer() : saved(std::cout.rdbuf(nullptr)) {}
    ~cTraceSilencer() { std::cout.rdbuf(saved); }

    cTraceSilencer(const cTraceSilencer&) = delete;
    cTraceSilencer& operator=(const cTraceSilencer&) = delete;

private:
    std::streambuf* saved;
};

#endif
