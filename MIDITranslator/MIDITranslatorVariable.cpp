#include "MIDITranslator/MIDITranslatorVariable.h"
