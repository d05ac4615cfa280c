#include "fuzz/RuleFileFuzzing.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

namespace
{
// Removed again when the fuzzer exits.
QTemporaryDir& RuleDirectory()
{
    static QTemporaryDir directory;
    return directory;
}
}

sRuleFileFuzzInput SplitRuleFileFuzzInput(const uint8_t* data, size_t size)
{
    sRuleFileFuzzInput input;
    const QByteArray whole(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const int separator = whole.indexOf('\0');
    input.json = separator < 0 ? whole : whole.left(separator);
    input.midi = separator < 0 ? QByteArray() : whole.mid(separator + 1);

    QFile file(RuleDirectory().filePath(QStringLiteral("rules.json")));
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(input.json) == input.json.size())
    {
        input.path = file.fileName();
    }
    return input;
}

// Qt 5.15's JSON parser leaks the earlier value when an object repeats a key
// whose value is an object or array ({"a": {}, "a": 1}). The leak is inside
// the library, whoever calls it; anything leaked elsewhere is still reported.
// Qt is built without frame pointers, so only the slow unwinder sees the
// parser's frame on the allocation stack that the suppression matches.
extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:QJsonDocument::fromJson\n";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Rejected entries write error trace lines; nobody reads them here.
    if (!std::freopen("/dev/null", "w", stdout))
    {
        return 1;
    }
    new QCoreApplication(*argc, *argv);
    return 0;
}
