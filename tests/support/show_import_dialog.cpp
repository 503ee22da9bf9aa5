// Shows an import dialog in a real window for a few seconds, for
// screenshots (tools/screenshot-dialog.sh). Usage:
//   show_import_dialog FILE [--all] [--field SETTINGS] [--seconds N] [COLUMN...]
// It prints its window geometry (WxH+X+Y) once it is on screen.
// COLUMN names ending in '*' are mandatory; --all also shows the widgets
// that only some importers use; --field shows the uniform field dialog set
// up from a "CSVUniformScalarField ..." settings text.
#include <QApplication>
#include <QFile>
#include <QTimer>
#include <cstdio>
#include <memory>

#include "QxCSVImport.h"
#include "QxCSVUniformScalarFieldImport.h"

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty()) {
        std::fprintf(stderr, "usage: show_import_dialog FILE [--all] [--field SETTINGS] [--seconds N] [COLUMN...]\n");
        return 2;
    }
    const int field = args.indexOf("--field");
    QxCSVUniformScalarFieldImport* fieldDialog = nullptr;
    std::unique_ptr<QxCSVImport> dialog;
    if (field > 0 && field + 1 < args.size())
        dialog.reset(fieldDialog = new QxCSVUniformScalarFieldImport);
    else
        dialog.reset(new QxCSVImport);
    dialog->setFileName(QFile::encodeName(args[0]).constData());
    int seconds = 5;
    for (int i = 1; i < args.size(); ++i) {
        if (args[i] == "--all") {
            for (QWidget* w : dialog->findChildren<QWidget*>())
                w->setVisible(true);
        } else if (args[i] == "--seconds" && i + 1 < args.size()) {
            seconds = args[++i].toInt();
        } else if (args[i] == "--field" && fieldDialog) {
            fieldDialog->loadSettingsFromLoadCommand(McString::fromQString(args[++i]));
            // Settings write the delimiter field only; show the list entry a
            // user would have picked for it.
            const QString delimiter = fieldDialog->lineEditColumnDelimiter->text();
            const int entry = QStringList({" ", ",", "\t", ";"}).indexOf(delimiter);
            if (entry >= 0)
                fieldDialog->comboBoxColumnDelimiter->setCurrentIndex(entry);
        } else {
            QString name = args[i];
            const bool mandatory = name.endsWith('*');
            if (mandatory)
                name.chop(1);
            dialog->addColumn(McString::fromQString(name), mandatory);
        }
    }
    dialog->move(0, 0);
    dialog->show();
    // Tells the screenshot script which part of the screen to keep.
    QTimer::singleShot(500, [&dialog] {
        const QRect g = dialog->frameGeometry();
        std::printf("%dx%d+%d+%d\n", g.width(), g.height(), g.x(), g.y());
        std::fflush(stdout);
    });
    QTimer::singleShot(seconds * 1000, &app, &QApplication::quit);
    return app.exec();
}
