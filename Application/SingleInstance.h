#ifndef SINGLEINSTANCE_H
#define SINGLEINSTANCE_H

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

// One Tessera per user session: two copies would each publish the DAW ports
// and take the mixer's single TCP link from each other. The first copy holds
// a lock file in the user's runtime directory and listens on a local socket
// beside it; a copy started while it runs asks it, through the socket, to
// show its preferences window, and is to end.
class cSingleInstance : public QObject
{
    Q_OBJECT
public:
    explicit cSingleInstance(const QString& directory, QObject* parent = nullptr);

    // True when no other copy runs: this one answers later starts from now
    // on. Otherwise the running copy is asked to show its window, once it
    // serves its event loop, and false; this takes at most a second or two.
    // Where no lock file can be made at all, true.
    bool Claim();

signals:
    // A later start asked for the preferences window.
    void ShowRequested();

private:
    void AskRunningCopy();

    QString socketPath;
    QLockFile lockFile;
    QLocalServer server;
};

#endif
