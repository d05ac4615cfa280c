#ifndef IPADDRESSVALIDATOR_H
#define IPADDRESSVALIDATOR_H

#include <QHostAddress>
#include <QValidator>

class QIntValidator;

// Rates the text of the address field: every dot-separated group must be a
// number from 0 to 255, and the all-zero address is refused. The number of
// groups is left to the field's input mask.
class cIPAddressValidator : public QValidator
{
    Q_OBJECT
public:
    explicit cIPAddressValidator(QObject* parent = nullptr);

    State validate(QString& text, int& pos) const override;

    // The address the field's text stands for. The field's mask pads groups
    // with blanks and allows leading zeros, which an address parser reads as
    // octal ("010" as 8); stores written by earlier releases may hold such
    // text too. Each group is read as decimal.
    static QHostAddress ToAddress(const QString& text);

private:
    QIntValidator* groupValidator;
};

#endif
