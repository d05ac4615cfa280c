#include "MIDITranslator/FileLocations.h"
