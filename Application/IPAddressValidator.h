#ifndef IPADDRESSVALIDATOR_H
#define IPADDRESSVALIDATOR_H

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

private:
    QIntValidator* groupValidator;
};

#endif
