#pragma once
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

#include "HxSdkApi.h"

// The host console. Every message is kept, in order, for whoever wants to
// report them later (hxhost's JSON), and echoed as it happens: by default as
// a line on stderr, or through the echo a host installs to show it its own way.
class HXSDK_API HxMessage {
public:
    enum Level { Info, Warning, Error };
    struct Entry {
        Level level;
        QString text;
    };

    // Plain console output, printf-style. A trailing line feed is optional.
    void printf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void printf(const QString& text);
    // A file that could not be read or written.
    void ioError(const QString& fileName, const QString& text = QString());
    // A console error line.
    void error(const QString& text);
    // In an interactive session a modal warning box with the given buttons
    // (empty texts: one OK button); in a batch run a console line. Returns
    // the index of the button pressed, 0 in a batch run.
    int warning(const QString& text, const QString& button0 = QString(),
                const QString& button1 = QString(), const QString& button2 = QString(),
                int defaultButton = -1, int escapeButton = -1, bool doNotShowAgain = false,
                int reserved = -1);

    const std::vector<Entry>& entries() const { return mEntries; }
    void clearEntries() { mEntries.clear(); }

    // Called with each message (trailing line feeds removed) once it is
    // kept; an empty echo restores the default.
    using Echo = std::function<void(Level level, const QString& text)>;
    void setEcho(Echo echo) { mEcho = std::move(echo); }

private:
    void record(Level level, const QString& text);
    std::vector<Entry> mEntries;
    Echo mEcho;
};

// The running host.
class HXSDK_API HxApplication {
public:
    static HxApplication* instance();
    HxMessage* message() { return &mMessage; }

    // Interactive sessions show warning boxes; batch runs print them.
    bool isInteractive() const { return mInteractive; }
    void setInteractive(bool on) { mInteractive = on; }

private:
    HxMessage mMessage;
    bool mInteractive = false;
};

#define theMsg (HxApplication::instance()->message())
