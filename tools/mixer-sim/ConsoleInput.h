#ifndef CONSOLEINPUT_H
#define CONSOLEINPUT_H

#include <QByteArray>
#include <QObject>
#include <QString>

class QSocketNotifier;

// Standard input, read line by line from the event loop without ever blocking
// it, whether it is a terminal, a pipe or a file.
class cConsoleInput : public QObject
{
    Q_OBJECT
public:
    explicit cConsoleInput(QObject* parent = nullptr);

signals:
    void LineRead(QString line);
    void EndOfInput();

private:
    void ReadAvailable();

    QSocketNotifier* notifier;
    QByteArray partialLine;
};

#endif
