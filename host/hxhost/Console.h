// hxhost's console on stderr: the package's messages and hxhost's own lines,
// escaped, with repeats capped and a progress bar kept below them.
#pragma once
#include <QHash>
#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "HxMessage.h"

namespace hxhost {

// A line drawn below the console's output (a progress bar) that the lines
// printed above it must not garble: it is wiped before each and drawn again.
class StatusLine {
public:
    virtual ~StatusLine() = default;
    virtual void hide() = 0;
    // Draws it again, now or, when that would redraw it too often, at its next change.
    virtual void show() = 0;
};

class Console {
public:
    using Writer = std::function<void(const std::string& bytes)>;
    // Messages of one kind shown within one load; the rest are counted.
    static constexpr int kShownPerKind = 20;

    // allMessages shows every message, however often its kind repeats.
    explicit Console(bool allMessages, Writer write = writeToStderr);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    // Makes this console echo theMsg's messages, until it is destroyed.
    void install();
    void setStatusLine(StatusLine* line) { mStatusLine = line; }

    // A message as the console shows it: escaped, unless its kind has been
    // shown kShownPerKind times in this load.
    void message(HxMessage::Level level, const QString& text);
    // A line of hxhost's own that is not a message (not in the JSON).
    void print(const QString& line);
    // Keeps text as an info message but shows `shown` in its place.
    void infoShownAs(const QString& text, const QString& shown);

    // A load's messages are capped by kind; its end says how many of each
    // kind were not shown.
    void beginLoad();
    void endLoad();

    static void writeToStderr(const std::string& bytes);

private:
    struct Kind {
        QString firstText;
        long long count;
    };
    void writeLine(const std::string& bytes);

    bool mAllMessages;
    Writer mWrite;
    StatusLine* mStatusLine = nullptr;
    bool mInstalled = false;
    bool mQuiet = false;
    bool mInLoad = false;
    QHash<QString, int> mKindIndex;
    std::vector<Kind> mKinds; // in the order of their first message
};

} // namespace hxhost
