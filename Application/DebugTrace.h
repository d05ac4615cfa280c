#ifndef DEBUGTRACE_H
#define DEBUGTRACE_H

#include <mutex>

// One lock for all trace output, so that lines written from the MIDI reader
// thread and the event loop never interleave. Not recursive: never trace while
// holding it.
extern std::mutex _TraceMutex;

// Every trace call names its place in the source: pass DEBUG_LOCATION as the
// first three arguments. __FILE__ is relative to the source tree (see the
// -fmacro-prefix-map option in the top-level CMakeLists.txt).
#define DEBUG_LOCATION __FILE__, __LINE__, __PRETTY_FUNCTION__

// Messages are formatted into a 512-byte buffer and truncated beyond it.
// "function" is accepted for the caller's convenience and not printed.
void DebugTrace(const char* sourceFile, int line, const char* function, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

// High-volume event tracing: formats and discards, so that it can be switched
// on later without touching the callers.
void DebugEventTrace(const char* sourceFile, int line, const char* function, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

// Writes "ERROR: <message>\t(<file>:<line>)" as one line on standard output.
void DebugErrTrace(const char* sourceFile, int line, const char* function, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

#endif
