// The console: messages are kept for the JSON record and echoed at once.
#include "HxMessage.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <cstdarg>
#include <cstdio>

#include "FormatV.h"

void HxMessage::record(Level level, const QString& text)
{
    QString line = text;
    while (line.endsWith(QLatin1Char('\n')))
        line.chop(1);
    mEntries.push_back({level, line});
    if (mEcho) {
        mEcho(level, line);
        return;
    }
    QByteArray bytes = line.toLocal8Bit();
    std::fprintf(stderr, "%s\n", bytes.constData());
    std::fflush(stderr);
}

void HxMessage::printf(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const std::string text = formatV(format, args);
    va_end(args);
    record(Info, QString::fromLocal8Bit(text.data(), static_cast<int>(text.size())));
}

void HxMessage::printf(const QString& text)
{
    record(Info, text);
}

void HxMessage::ioError(const QString& fileName, const QString& text)
{
    QString line = QStringLiteral("Error: cannot read file \"%1\"").arg(fileName);
    if (!text.isEmpty())
        line += QStringLiteral(": ") + text;
    record(Error, line);
}

void HxMessage::error(const QString& text)
{
    record(Error, text);
}

int HxMessage::warning(const QString& text, const QString& button0, const QString& button1,
                       const QString& button2, int defaultButton, int escapeButton, bool, int)
{
    record(Warning, QStringLiteral("Warning: ") + text);
    if (!HxApplication::instance()->isInteractive() || !qobject_cast<QApplication*>(qApp))
        return 0;

    QMessageBox box(QMessageBox::Warning, QStringLiteral("Warning"), text);
    QList<QPushButton*> buttons;
    for (const QString& label : {button0, button1, button2})
        if (!label.isEmpty())
            buttons.append(box.addButton(label, QMessageBox::AcceptRole));
    if (buttons.isEmpty())
        buttons.append(box.addButton(QMessageBox::Ok));
    if (defaultButton >= 0 && defaultButton < buttons.size())
        box.setDefaultButton(buttons[defaultButton]);
    if (escapeButton >= 0 && escapeButton < buttons.size())
        box.setEscapeButton(buttons[escapeButton]);
    box.exec();
    int index = buttons.indexOf(qobject_cast<QPushButton*>(box.clickedButton()));
    return index < 0 ? 0 : index;
}

HxApplication* HxApplication::instance()
{
    static HxApplication app;
    return &app;
}
