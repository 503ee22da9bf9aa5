#pragma once
// Runs build/bin/hxhost as a user would and reads back what it printed.
#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

struct HostRun {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
    // stdout parsed as JSON (empty when it is not JSON).
    QJsonObject json;
    QJsonArray objects() const { return json.value(QStringLiteral("objects")).toArray(); }
};

// Runs hxhost with args and no display; adds "--json -" when asked. Relative
// paths in args are taken from workDir when one is given.
inline HostRun runHxhost(const QStringList& args, bool withJson = true, const QString& workDir = QString())
{
    QProcess p;
    if (!workDir.isEmpty())
        p.setWorkingDirectory(workDir);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    p.setProcessEnvironment(env);
    QStringList all = args;
    if (withJson)
        all << QStringLiteral("--json") << QStringLiteral("-");
    p.start(QStringLiteral(HX_BIN_DIR "/hxhost"), all);
    HostRun r;
    if (!p.waitForFinished(600000))
        return r;
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = p.readAllStandardOutput();
    r.err = p.readAllStandardError();
    r.json = QJsonDocument::fromJson(r.out).object();
    return r;
}
