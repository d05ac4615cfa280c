#include "MIDITranslator/MIDITranslatorConfiguration.h"
