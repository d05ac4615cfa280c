#include "MIDITranslator/MixerDawMap.h"
