#include "Application/SingleInstance.h"

#include "Application/DebugTrace.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QLocalSocket>
#include <QThread>

namespace
{
const QString NAME = QStringLiteral("com.kestrel.Tessera");
// A copy that holds the lock but does not listen yet is just starting: it is
// asked again until this much time has gone.
const int ANSWER_WAIT_MS = 1500;
const int ASK_INTERVAL_MS = 50;
}

cSingleInstance::cSingleInstance(const QString& directory, QObject* parent)
    : QObject(parent),
      socketPath(directory + QLatin1Char('/') + NAME + QStringLiteral(".socket")),
      lockFile(directory + QLatin1Char('/') + NAME + QStringLiteral(".lock"))
{
    // The copy that holds the lock may run for days: only a lock whose owner
    // has gone (a crash) is taken over, never one that is merely old.
    lockFile.setStaleLockTime(0);
    // Any connection is a request; nothing is read from it.
    connect(&server, &QLocalServer::newConnection, this, [this]() {
        while (QLocalSocket* request = server.nextPendingConnection())
        {
            request->deleteLater();
            emit ShowRequested();
        }
    });
}

bool cSingleInstance::Claim()
{
    if (!lockFile.tryLock(0))
    {
        if (lockFile.error() != QLockFile::LockFailedError)
        {
            // Better two copies than none.
            DebugErrTrace(DEBUG_LOCATION, "Cannot tell whether Tessera runs already: no lock file in %s",
                QFileInfo(socketPath).absolutePath().toLocal8Bit().constData());
            return true;
        }
        AskRunningCopy();
        return false;
    }
    // A socket left by a copy that crashed would be in the way.
    QLocalServer::removeServer(socketPath);
    server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!server.listen(socketPath))
    {
        DebugErrTrace(DEBUG_LOCATION, "Cannot listen for later starts on %s: %s",
            socketPath.toLocal8Bit().constData(), server.errorString().toLocal8Bit().constData());
    }
    return true;
}

void cSingleInstance::AskRunningCopy()
{
    QElapsedTimer waited;
    waited.start();
    QLocalSocket socket;
    while (waited.elapsed() < ANSWER_WAIT_MS)
    {
        socket.connectToServer(socketPath);
        if (socket.waitForConnected(ASK_INTERVAL_MS))
        {
            socket.disconnectFromServer();
            return;
        }
        QThread::msleep(ASK_INTERVAL_MS);
    }
    DebugErrTrace(DEBUG_LOCATION, "Tessera runs already but does not answer on %s",
        socketPath.toLocal8Bit().constData());
}
