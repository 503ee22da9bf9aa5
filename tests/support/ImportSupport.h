#pragma once
// Helpers for the tests that import: files, the console, reader calls as
// hxhost makes them, dialogs driven while they run modally, and objects as
// hxhost's JSON.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest/QTest>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "HostRun.h"
#include "HxData.h"
#include "HxMessage.h"
#include "HxParameter.h"
#include "JsonWriter.h"

// Failures show texts as texts, not as lists of characters.
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }

// Every test starts and ends with an empty object pool, and starts with an
// empty console.
class ImportTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        HxObjectPool::instance()->clear();
        theMsg->clearEntries();
    }
    void TearDown() override { HxObjectPool::instance()->clear(); }
    QString write(const QString& name, const QByteArray& content)
    {
        QFile f(dir.filePath(name));
        f.open(QIODevice::WriteOnly);
        f.write(content);
        return f.fileName();
    }
    QTemporaryDir dir;
};

inline QStringList consoleTexts(HxMessage::Level level)
{
    QStringList texts;
    for (const HxMessage::Entry& e : theMsg->entries())
        if (e.level == level)
            texts << e.text;
    return texts;
}

// The words after "load -OPTION" of a command line, split as hxhost does.
struct Args {
    explicit Args(const std::string& command)
    {
        std::string error;
        EXPECT_TRUE(hxhost::splitCommandLine(command, words, error)) << command << ": " << error;
        for (size_t i = 2; i < words.size(); ++i)
            argv.push_back(words[i].c_str());
    }
    explicit Args(const QString& command) : Args(command.toStdString()) {}
    int argc() const { return static_cast<int>(argv.size()); }
    std::vector<std::string> words;
    std::vector<const char*> argv;
};

inline int callReader(int (*entry)(int, const char**), const QString& command)
{
    Args a(command);
    return entry(a.argc(), a.argv.data());
}

// Runs body; when a modal dialog of type D opens meanwhile, hands it to act
// (which must close it). Returns whether one opened.
template <class D>
bool driveDialog(const std::function<void(D&)>& act, const std::function<void()>& body)
{
    bool opened = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<D*>(QApplication::activeModalWidget());
        if (dialog && dialog->isVisible()) {
            timer.stop();
            opened = true;
            act(*dialog);
        }
    });
    timer.start(5);
    body();
    return opened;
}

// Runs body in the repository root, where the examples script's paths hold.
inline void inSourceDir(const std::function<void()>& body)
{
    const QString before = QDir::currentPath();
    QDir::setCurrent(HX_SOURCE_DIR);
    body();
    QDir::setCurrent(before);
}

inline bool exampleScriptHolds(const QString& command)
{
    QFile f(HX_SOURCE_DIR "/examples/examples.hx");
    f.open(QIODevice::ReadOnly);
    return QString::fromLatin1(f.readAll()).split('\n').contains(command);
}

inline HxData* lastObject()
{
    const auto& objects = HxObjectPool::instance()->objects();
    return objects.empty() ? nullptr : objects.back();
}

inline QString loadCommandOf(const HxData* data)
{
    auto* p = data ? dynamic_cast<const HxParameter*>(data->parameters().find("LoadCmd")) : nullptr;
    return p ? p->getString() : QString();
}

// The object as hxhost writes it into its JSON.
inline QJsonObject jsonOf(HxData* data)
{
    std::FILE* f = std::tmpfile();
    hxhost::writeJson(f, {data}, {});
    std::rewind(f);
    QFile in;
    in.open(f, QIODevice::ReadOnly);
    const QByteArray text = in.readAll();
    in.close();
    std::fclose(f);
    return QJsonDocument::fromJson(text).object().value("objects").toArray()[0].toObject();
}

// Expects the last object's LoadCmd to be a line of the examples script that
// hxhost, run in the repository root, replays to the same object. Returns
// the replayed object's own LoadCmd.
inline QString expectExampleReplaysToTheSameObject()
{
    QJsonObject imported = jsonOf(lastObject());
    const QString command = loadCommandOf(lastObject());
    EXPECT_TRUE(exampleScriptHolds(command)) << command.toStdString();
    HostRun r = runHxhost({"-c", command}, true, HX_SOURCE_DIR);
    EXPECT_EQ(r.exitCode, 0) << r.err.constData();
    QJsonObject replayed = r.objects()[0].toObject();
    const QString again = replayed.take("parameters").toObject().value("LoadCmd").toString();
    imported.remove("parameters");
    EXPECT_EQ(replayed, imported);
    return again;
}
