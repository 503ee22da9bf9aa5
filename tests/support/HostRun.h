#pragma once
// Runs build/bin/hxhost as a user would and reads back what it printed.
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

struct HostRun {
    int exitCode = -1;
    QByteArray out, err;
    QJsonObject json; // stdout as JSON, empty when it is not JSON
    QJsonArray objects() const { return json.value(QStringLiteral("objects")).toArray(); }
};

// Runs hxhost with args and no display; adds "--json -" when asked.
inline HostRun runHxhost(const QStringList& args, bool withJson = true)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        env.remove(name);
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(HX_BIN_DIR "/hxhost"), withJson ? args + QStringList{"--json", "-"} : args);
    HostRun r;
    if (p.waitForFinished(600000) && p.exitStatus() == QProcess::NormalExit)
        r.exitCode = p.exitCode();
    r.out = p.readAllStandardOutput();
    r.err = p.readAllStandardError();
    r.json = QJsonDocument::fromJson(r.out).object();
    return r;
}
