#pragma once
// Helpers for the tests that import: files, the console, reader calls as
// hxhost makes them, dialogs driven while they run modally, and objects as
// hxhost's JSON.
#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest/QTest>
#include <cstdio>
#include <cstdlib>
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
    explicit Args(const QString& command)
    {
        std::string error;
        EXPECT_TRUE(hxhost::splitCommandLine(command.toStdString(), words, error)) << command.toStdString() << error;
        for (size_t i = 2; i < words.size(); ++i)
            argv.push_back(words[i].c_str());
    }
    int argc() const { return static_cast<int>(argv.size()); }
    std::vector<std::string> words;
    std::vector<const char*> argv;
};

inline int callReader(int (*entry)(int, const char**), const QString& command)
{
    Args a(command);
    return entry(a.argc(), a.argv.data());
}

// While it lives, presses OK on every message box that opens, keeping
// "title: text" of each, and hands the first dialog of type D that opens to
// act, which must close it.
template <class D = QDialog>
class ModalDriver {
public:
    explicit ModalDriver(std::function<void(D&)> act = {}) : act(std::move(act))
    {
        QObject::connect(&timer, &QTimer::timeout, [this] {
            QWidget* w = QApplication::activeModalWidget();
            auto* box = qobject_cast<QMessageBox*>(w);
            if (box && box->isVisible()) {
                QAbstractButton* ok = box->button(QMessageBox::Ok);
                seen << box->windowTitle() + ": " + box->text() + (ok ? "" : " (no OK button)");
                ok ? QTest::mouseClick(ok, Qt::LeftButton) : box->reject();
            } else if (auto* d = qobject_cast<D*>(w); d && d->isVisible() && this->act && !opened) {
                opened = true;
                this->act(*d);
            }
        });
        timer.start(5);
    }
    QStringList seen;
    bool opened = false;

private:
    std::function<void(D&)> act;
    QTimer timer;
};

inline bool exampleScriptHolds(const QString& command)
{
    QFile f("examples/examples.hx");
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
    char* text = nullptr;
    size_t length = 0;
    std::FILE* f = open_memstream(&text, &length);
    hxhost::writeJson(f, {data}, {});
    std::fclose(f);
    const QJsonDocument json = QJsonDocument::fromJson(QByteArray(text, static_cast<int>(length)));
    std::free(text);
    return json.object().value("objects").toArray()[0].toObject();
}

// Expects the last object's LoadCmd to be a line of the examples script that
// hxhost, run in the repository root, replays to the same object. Returns
// the replayed object's own LoadCmd.
inline QString expectExampleReplaysToTheSameObject()
{
    QJsonObject imported = jsonOf(lastObject());
    const QString command = loadCommandOf(lastObject());
    EXPECT_TRUE(exampleScriptHolds(command)) << command.toStdString();
    HostRun r = runHxhost({"-c", command});
    EXPECT_EQ(r.exitCode, 0) << r.err.constData();
    QJsonObject replayed = r.objects()[0].toObject();
    const QString again = replayed.take("parameters").toObject().value("LoadCmd").toString();
    imported.remove("parameters");
    EXPECT_EQ(replayed, imported);
    return again;
}
