#include "Application/IPAddressValidator.h"

#include <QIntValidator>
#include <QStringList>

cIPAddressValidator::cIPAddressValidator(QObject* parent)
    : QValidator(parent), groupValidator(new QIntValidator(0, 255, this))
{
}

QValidator::State cIPAddressValidator::validate(QString& text, int& /*pos*/) const
{
    bool allZero = true;
    const QStringList groups = text.split(QLatin1Char('.'), Qt::KeepEmptyParts, Qt::CaseSensitive);
    for (const QString& untrimmedGroup : groups)
    {
        // The input mask pads short groups with blanks; they are not errors.
        QString group = untrimmedGroup.trimmed();
        int groupPos = 0;
        State state = groupValidator->validate(group, groupPos);
        // The integer validator leaves a number above its range Intermediate,
        // as the user might still type a sign in front; a group has no sign,
        // so no typing can make it acceptable.
        bool isNumber = false;
        if (state == Intermediate && group.toInt(&isNumber) > groupValidator->top() && isNumber)
        {
            state = Invalid;
        }
        if (state != Acceptable)
        {
            return state;
        }
        allZero = allZero && group.toInt() == 0;
    }
    return allZero ? Invalid : Acceptable;
}

QHostAddress cIPAddressValidator::ToAddress(const QString& text)
{
    QStringList groups = text.split(QLatin1Char('.'));
    for (QString& group : groups)
    {
        bool isNumber = false;
        const int value = group.trimmed().toInt(&isNumber, 10);
        if (!isNumber)
        {
            return QHostAddress(text);
        }
        group = QString::number(value);
    }
    return QHostAddress(groups.join(QLatin1Char('.')));
}
