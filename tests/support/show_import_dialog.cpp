// Shows the generic import dialog in a real window for a few seconds, for
// screenshots (tools/screenshot-dialog.sh). Usage:
//   show_import_dialog FILE [--all] [--seconds N] [COLUMN...]
// It prints its window geometry (WxH+X+Y) once it is on screen.
// COLUMN names ending in '*' are mandatory; --all also shows the widgets
// that only some importers use.
#include <QApplication>
#include <QFile>
#include <cstdio>
#include <QTimer>

#include "QxCSVImport.h"

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty()) {
        std::fprintf(stderr, "usage: show_import_dialog FILE [--all] [--seconds N] [COLUMN...]\n");
        return 2;
    }
    QxCSVImport dialog;
    int seconds = 5;
    for (int i = 1; i < args.size(); ++i) {
        if (args[i] == "--all") {
            for (QWidget* w : dialog.findChildren<QWidget*>())
                w->setVisible(true);
        } else if (args[i] == "--seconds" && i + 1 < args.size()) {
            seconds = args[++i].toInt();
        } else {
            QString name = args[i];
            const bool mandatory = name.endsWith('*');
            if (mandatory)
                name.chop(1);
            dialog.addColumn(McString::fromQString(name), mandatory);
        }
    }
    dialog.setFileName(QFile::encodeName(args[0]).constData());
    dialog.move(0, 0);
    dialog.show();
    // Tells the screenshot script which part of the screen to keep.
    QTimer::singleShot(500, [&dialog] {
        const QRect g = dialog.frameGeometry();
        std::printf("%dx%d+%d+%d\n", g.width(), g.height(), g.x(), g.y());
        std::fflush(stdout);
    });
    QTimer::singleShot(seconds * 1000, &app, &QApplication::quit);
    return app.exec();
}
