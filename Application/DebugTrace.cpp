#include "Application/DebugTrace.h"

#include <cstdarg>
#include <cstdio>
#include <iostream>
#include <sstream>

std::mutex _TraceMutex;

namespace
{
const size_t TRACE_BUFFER_SIZE = 512;

// A null file name must not put std::cout into its failed state and silence
// every later trace line.
const char* SourceFileOrEmpty(const char* sourceFile)
{
    return sourceFile ? sourceFile : "";
}
}

// Formatting happens before the lock is taken, on the caller's own stack, so
// that the critical section holds only the stream writes.
#define FORMAT_TRACE_MESSAGE(buffer, format)                  \
    char buffer[TRACE_BUFFER_SIZE];                           \
    {                                                         \
        va_list arguments;                                    \
        va_start(arguments, format);                          \
        vsnprintf(buffer, sizeof(buffer), format, arguments); \
        va_end(arguments);                                    \
    }

void DebugTrace(const char* sourceFile, int line, const char* /*function*/, const char* format, ...)
{
    FORMAT_TRACE_MESSAGE(message, format);

    std::lock_guard<std::mutex> lock(_TraceMutex);
    std::cout << message << "\t(" << SourceFileOrEmpty(sourceFile) << ":" << line << ")" << std::endl;
}

void DebugEventTrace(const char* /*sourceFile*/, int /*line*/, const char* /*function*/, const char* format, ...)
{
    FORMAT_TRACE_MESSAGE(message, format);
    (void)message;
}

void DebugErrTrace(const char* sourceFile, int line, const char* /*function*/, const char* format, ...)
{
    FORMAT_TRACE_MESSAGE(message, format);

    std::lock_guard<std::mutex> lock(_TraceMutex);
    std::ostringstream text;
    text << "ERROR: " << message << "\t(" << SourceFileOrEmpty(sourceFile) << ":" << line << ")";
    std::cout << text.str() << std::endl;
}
