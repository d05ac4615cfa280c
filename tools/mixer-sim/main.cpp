// mixer-sim: stands in for a mixer on the network, for checking a set-up
// without the console and for testing Tessera. See --help.

#include "ConsoleInput.h"
#include "DiscoveryResponder.h"
#include "MIDIPeerServer.h"
#include "StopSignals.h"

#include "Common/MIDI/Text/HexText.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

namespace
{
const char* const DESCRIPTION =
    "Stands in for a mixer on the network.\n"
    "\n"
    "It answers the discovery datagrams of one mixer family (--find) with a unit\n"
    "name (--name), accepts one TCP connection on port 51325 at a time (a new one\n"
    "replaces the old), and prints every MIDI message it receives, in hex with the\n"
    "seconds since start:\n"
    "    12.345678 in  B0 07 7F\n"
    "Each line of standard input is MIDI in hex (\"B0 07 7F\" or \"b0077f\") sent to\n"
    "the connected peer and printed with \"out\"; lines starting with # are\n"
    "ignored, and the line \"close\" closes the peer's connection. End of input\n"
    "(Ctrl+D), SIGINT (Ctrl+C) or SIGTERM stops it.\n"
    "\n"
    "Answers leave from --address and the TCP port listens there, so several\n"
    "simulators can run side by side on different addresses, e.g. 127.0.0.2 and\n"
    "127.0.0.3. Events are printed as \"listening\", \"answered\", \"connected\",\n"
    "\"disconnected\" and \"dropped\" lines; errors go to standard error.";

class cPrinter
{
public:
    cPrinter() { clock.start(); }

    void Line(const QString& text) const
    {
        std::fputs(qPrintable(text), stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
    }

    void Message(const char* direction, const QByteArray& bytes) const
    {
        Line(QStringLiteral("%1 %2 %3")
                 .arg(clock.nsecsElapsed() / 1e9, 0, 'f', 6)
                 .arg(QString::fromLatin1(direction), -3)
                 .arg(cHexText::Format(bytes)));
    }

    static void Error(const QString& text)
    {
        std::fprintf(stderr, "mixer-sim: %s\n", qPrintable(text));
        std::fflush(stderr);
    }

private:
    QElapsedTimer clock;
};

// Reads MIDI in hex from a file; false with the reason in errorText when the
// file cannot be read or holds something else.
bool ReadHexFile(const QString& path, QByteArray& bytes, QString& errorText)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
    {
        errorText = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    int lineNumber = 0;
    while (!file.atEnd())
    {
        ++lineNumber;
        const QString line = QString::fromLocal8Bit(file.readLine()).trimmed();
        QByteArray lineBytes;
        if (line.startsWith(QLatin1Char('#')))
        {
            continue;
        }
        if (!cHexText::Parse(line, lineBytes))
        {
            errorText = QStringLiteral("%1:%2: not MIDI in hex: %3").arg(path).arg(lineNumber).arg(line);
            return false;
        }
        bytes.append(lineBytes);
    }
    return true;
}
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("mixer-sim"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(DESCRIPTION));
    parser.addHelpOption();
    const QCommandLineOption addressOption(
        QStringLiteral("address"), QStringLiteral("IPv4 address to answer from and listen on (default 127.0.0.1)."),
        QStringLiteral("address"), QStringLiteral("127.0.0.1"));
    const QCommandLineOption findOption(
        QStringLiteral("find"),
        QStringLiteral("Find string to answer, e.g. \"TX Find\" or \"KVR Find\"; without it discovery is not answered."),
        QStringLiteral("string"));
    const QCommandLineOption nameOption(QStringLiteral("name"), QStringLiteral("Unit name given in answers."),
                                        QStringLiteral("name"), QStringLiteral("Mixer Simulator"));
    const QCommandLineOption answerOption(
        QStringLiteral("answer-hex"),
        QStringLiteral("Answer with these bytes (hex) instead of the name, to try odd mixers."),
        QStringLiteral("hex"));
    const QCommandLineOption echoOption(QStringLiteral("echo"),
                                        QStringLiteral("Send every byte received straight back to the peer."));
    const QCommandLineOption sendOption(QStringLiteral("send"),
                                        QStringLiteral("Send the MIDI in hex in this file to each peer as it connects."),
                                        QStringLiteral("file"));
    parser.addOptions({addressOption, findOption, nameOption, answerOption, echoOption, sendOption});
    parser.process(application);

    const QHostAddress address(parser.value(addressOption));
    if (address.isNull() || address.protocol() != QAbstractSocket::IPv4Protocol)
    {
        cPrinter::Error(QStringLiteral("not an IPv4 address: %1").arg(parser.value(addressOption)));
        return 2;
    }
    QByteArray answer = parser.value(nameOption).toLatin1();
    if (parser.isSet(answerOption) && !cHexText::Parse(parser.value(answerOption), answer))
    {
        cPrinter::Error(QStringLiteral("--answer-hex is not hex: %1").arg(parser.value(answerOption)));
        return 2;
    }
    QByteArray greeting;
    QString errorText;
    if (parser.isSet(sendOption) && !ReadHexFile(parser.value(sendOption), greeting, errorText))
    {
        cPrinter::Error(errorText);
        return 2;
    }

    const cPrinter printer;
    cMIDIPeerServer server(address, parser.isSet(echoOption));
    if (!server.Start(errorText))
    {
        cPrinter::Error(errorText);
        return 1;
    }
    cDiscoveryResponder* responder = nullptr;
    if (parser.isSet(findOption))
    {
        responder = new cDiscoveryResponder(address, parser.value(findOption).toLatin1(), answer, &application);
        if (!responder->Start(errorText))
        {
            cPrinter::Error(errorText);
            return 1;
        }
        QObject::connect(responder, &cDiscoveryResponder::Answered, [&printer](QHostAddress finder, quint16 port) {
            printer.Line(QStringLiteral("answered %1:%2").arg(finder.toString()).arg(port));
        });
    }

    QObject::connect(&server, &cMIDIPeerServer::PeerConnected,
                     [&printer, &server, &greeting](QHostAddress peer, quint16 port) {
                         printer.Line(QStringLiteral("connected %1:%2").arg(peer.toString()).arg(port));
                         if (!greeting.isEmpty())
                         {
                             server.Send(greeting);
                         }
                     });
    QObject::connect(&server, &cMIDIPeerServer::PeerDisconnected,
                     [&printer]() { printer.Line(QStringLiteral("disconnected")); });
    QObject::connect(&server, &cMIDIPeerServer::MessageReceived,
                     [&printer](const QByteArray& message) { printer.Message("in", message); });
    QObject::connect(&server, &cMIDIPeerServer::MessageSent,
                     [&printer](const QByteArray& bytes) { printer.Message("out", bytes); });

    cConsoleInput console;
    QObject::connect(&console, &cConsoleInput::LineRead, [&printer, &server](const QString& text) {
        const QString line = text.trimmed();
        QByteArray bytes;
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
        {
            return;
        }
        if (line == QLatin1String("close"))
        {
            server.ClosePeer();
        }
        else if (!cHexText::Parse(line, bytes))
        {
            cPrinter::Error(QStringLiteral("not MIDI in hex: %1").arg(line));
        }
        else if (!server.Send(bytes))
        {
            printer.Line(QStringLiteral("dropped %1 (no peer)").arg(cHexText::Format(bytes)));
        }
    });
    QObject::connect(&console, &cConsoleInput::EndOfInput, &application, &QCoreApplication::quit);
    cStopSignals stopSignals;
    QObject::connect(&stopSignals, &cStopSignals::StopRequested, &application, &QCoreApplication::quit);

    printer.Line(QStringLiteral("listening %1:%2").arg(address.toString()).arg(cMIDIPeerServer::MIDI_PORT));
    return application.exec();
}
