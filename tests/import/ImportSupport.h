#pragma once
// Helpers for the importer tests: files, reader calls as hxhost makes them,
// dialogs driven while they run modally, and objects as hxhost's JSON.
#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest/QTest>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "HxData.h"
#include "HxMessage.h"
#include "HxParameter.h"
#include "JsonWriter.h"

using ReaderEntry = int (*)(int, const char**);

// Writes files into a folder that lives as long as the object.
class CsvFiles {
public:
    QString write(const QString& name, const QByteArray& content)
    {
        const QString path = dir.filePath(name);
        QFile f(path);
        f.open(QIODevice::WriteOnly);
        f.write(content);
        return path;
    }

private:
    QTemporaryDir dir;
};

// Calls entry with the words of "load -OPTION FILE ARGS..." as hxhost does.
inline int callReader(ReaderEntry entry, const QString& command)
{
    std::vector<std::string> words;
    std::string error;
    hxhost::splitCommandLine(command.toStdString(), words, error);
    std::vector<const char*> argv;
    for (size_t i = 2; i < words.size(); ++i)
        argv.push_back(words[i].c_str());
    return entry(static_cast<int>(argv.size()), argv.data());
}

// Runs body; when a modal dialog of type D opens meanwhile, hands it to act
// (which must close it). Returns whether one opened.
template <class D>
bool driveDialog(const std::function<void(D&)>& act, const std::function<void()>& body)
{
    bool opened = false;
    QTimer timer;
    timer.setInterval(5);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<D*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        timer.stop();
        opened = true;
        act(*dialog);
    });
    timer.start();
    body();
    return opened;
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

inline int objectCount()
{
    return static_cast<int>(HxObjectPool::instance()->objects().size());
}

inline HxData* lastObject()
{
    const auto& objects = HxObjectPool::instance()->objects();
    return objects.empty() ? nullptr : objects.back();
}
