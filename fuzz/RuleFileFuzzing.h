#ifndef RULEFILEFUZZING_H
#define RULEFILEFUZZING_H

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

// What the fuzz targets that load rule files share. Linking RuleFileFuzzing.cpp
// also gives them the fuzzer's initialisation (an application object, the
// trace sent to /dev/null) and the sanitizer settings.
//
// Input layout: rule file JSON text, a NUL byte, then MIDI bytes. Without a
// NUL everything is JSON text and there are no MIDI bytes.
struct sRuleFileFuzzInput
{
    QByteArray json;
    QByteArray midi;
    // Where the JSON text was written (the configuration reads rule files only
    // from disk); empty if it could not be written.
    QString path;
};

sRuleFileFuzzInput SplitRuleFileFuzzInput(const uint8_t* data, size_t size);

#endif
