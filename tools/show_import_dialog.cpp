// Shows an import dialog in a real window for a few seconds, for
// screenshots (tools/screenshot-dialog.sh). Usage:
//   show_import_dialog FILE [--importer point_cloud|line_set]
//                      [--field SETTINGS] [--all] [--seconds N]
//                      [--delimiter ENTRY] [--header] [--pick C=E] [--text C]
//                      [--line-delimiter TEXT] [COLUMN...]
// It prints its window geometry (WxH+X+Y) once it is on screen.
// Without --importer or --field it shows the generic dialog with the COLUMN
// names given (names ending in '*' are mandatory); --all also shows the
// widgets that only some importers use. --field shows the uniform field
// dialog set up from a "CSVUniformScalarField ..." settings text.
// --delimiter chooses an entry of the delimiter list, --header ticks the
// header box, --pick sets the picker of logical column C to entry E (a file
// column counted from 1), --text makes the value column C of a point cloud
// dialog a "String" column and --line-delimiter chooses a line set
// dialog's delimiter mode and text.
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QTimer>
#include <cstdio>
#include <memory>

#include "QxCSVImport.h"
#include "QxCSVLineSetImport.h"
#include "QxCSVPointClusterImport.h"
#include "QxCSVUniformScalarFieldImport.h"

namespace {

QString valueOf(const QStringList& args, const char* option)
{
    const int i = args.indexOf(option);
    return i > 0 && i + 1 < args.size() ? args[i + 1] : QString();
}

std::unique_ptr<QxCSVImport> createDialog(const QStringList& args)
{
    if (!valueOf(args, "--field").isEmpty())
        return std::make_unique<QxCSVUniformScalarFieldImport>();
    const QString kind = valueOf(args, "--importer");
    if (kind == "point_cloud")
        return std::make_unique<QxCSVPointClusterImport>();
    if (kind == "line_set")
        return std::make_unique<QxCSVLineSetImport>();
    return std::make_unique<QxCSVImport>();
}

void addNamedColumn(QxCSVImport& dialog, QString name)
{
    const bool mandatory = name.endsWith('*');
    if (mandatory)
        name.chop(1);
    dialog.addColumn(McString::fromQString(name), mandatory);
}

void loadFieldSettings(QxCSVImport& dialog, const QString& settings)
{
    auto* field = qobject_cast<QxCSVUniformScalarFieldImport*>(&dialog);
    if (!field)
        return;
    field->loadSettingsFromLoadCommand(McString::fromQString(settings));
    // Settings write the delimiter field only; show the list entry a user
    // would have picked for it.
    const int entry = QStringList({" ", ",", "\t", ";"}).indexOf(field->lineEditColumnDelimiter->text());
    if (entry >= 0)
        field->comboBoxColumnDelimiter->setCurrentIndex(entry);
}

void applyOption(QxCSVImport& dialog, const QString& option, const QString& value, int& seconds)
{
    if (option == "--seconds") {
        seconds = value.toInt();
    } else if (option == "--field") {
        loadFieldSettings(dialog, value);
    } else if (option == "--delimiter") {
        dialog.comboBoxColumnDelimiter->setCurrentIndex(value.toInt());
    } else if (option == "--pick") {
        dialog.setPhysicalColumnIndex(value.section('=', 0, 0).toInt(), value.section('=', 1).toInt() - 1);
    } else if (option == "--text") {
        if (auto* cloud = qobject_cast<QxCSVPointClusterImport*>(&dialog))
            if (QComboBox* type = cloud->dataTypePicker(value.toInt()))
                type->setCurrentIndex(QxCSVPointClusterImport::StringValues);
    } else if (option == "--line-delimiter") {
        dialog.radioButtonLineDelimitor->setChecked(true);
        dialog.lineEditVerticalDelimiter->setText(value);
    }
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty()) {
        std::fprintf(stderr, "usage: show_import_dialog FILE [--importer point_cloud|line_set] [--field SETTINGS] "
                             "[--all] [--seconds N] [--delimiter ENTRY] [--header] [--pick C=E] [--text C] "
                             "[--line-delimiter TEXT] [COLUMN...]\n");
        return 2;
    }
    std::unique_ptr<QxCSVImport> dialog = createDialog(args);
    dialog->setFileName(QFile::encodeName(args[0]).constData());
    int seconds = 5;
    const QStringList withValue = {"--importer", "--field", "--seconds", "--delimiter",
                                   "--pick", "--text", "--line-delimiter"};
    for (int i = 1; i < args.size(); ++i) {
        if (args[i] == "--all") {
            for (QWidget* w : dialog->findChildren<QWidget*>())
                w->setVisible(true);
        } else if (args[i] == "--header") {
            dialog->firstLineColumnLabels->setChecked(true);
        } else if (withValue.contains(args[i]) && i + 1 < args.size()) {
            applyOption(*dialog, args[i], args[i + 1], seconds);
            ++i;
        } else {
            addNamedColumn(*dialog, args[i]);
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
