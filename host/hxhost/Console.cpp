#include "Console.h"

#include <cstdio>

#include "ConsoleText.h"

namespace hxhost {

Console::Console(bool allMessages, Writer write) : mAllMessages(allMessages), mWrite(std::move(write)) {}

Console::~Console()
{
    if (mInstalled)
        theMsg->setEcho(nullptr);
}

void Console::install()
{
    theMsg->setEcho([this](HxMessage::Level level, const QString& text) { message(level, text); });
    mInstalled = true;
}

void Console::writeToStderr(const std::string& bytes)
{
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
    std::fflush(stderr);
}

void Console::writeLine(const std::string& bytes)
{
    if (mStatusLine)
        mStatusLine->hide();
    mWrite(bytes + '\n');
    if (mStatusLine)
        mStatusLine->show();
}

void Console::message(HxMessage::Level level, const QString& text)
{
    if (mQuiet)
        return;
    if (mInLoad && !mAllMessages) {
        // The level is part of the kind: an error never hides behind an info.
        const QString key = QString::number(level) + messageKind(text);
        auto found = mKindIndex.find(key);
        if (found == mKindIndex.end()) {
            found = mKindIndex.insert(key, static_cast<int>(mKinds.size()));
            mKinds.push_back({text, 0});
        }
        if (++mKinds[*found].count > kShownPerKind)
            return;
    }
    writeLine(escapeForConsole(text));
}

void Console::print(const QString& line)
{
    writeLine(escapeForConsole(line));
}

void Console::infoShownAs(const QString& text, const QString& shown)
{
    mQuiet = true;
    theMsg->printf(text);
    mQuiet = false;
    print(shown);
}

void Console::beginLoad()
{
    mInLoad = true;
    mKindIndex.clear();
    mKinds.clear();
}

void Console::endLoad()
{
    mInLoad = false;
    for (const Kind& kind : mKinds)
        if (kind.count > kShownPerKind)
            print(QStringLiteral("... and %1 more like this: \"%2\"")
                      .arg(QString::number(kind.count - kShownPerKind), shortened(kind.firstText, 60)));
    mKindIndex.clear();
    mKinds.clear();
}

} // namespace hxhost
