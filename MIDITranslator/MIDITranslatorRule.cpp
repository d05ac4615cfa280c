#include "MIDITranslator/MIDITranslatorRule.h"
