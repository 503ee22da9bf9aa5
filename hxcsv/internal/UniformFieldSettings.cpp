// The settings text of the uniform field's replay command:
//   load -uniform_scalar_field_csv "FILE" "CSVUniformScalarField T1 ... T21" -dataOnly
// The 21 tokens after the keyword are blank-separated and unquoted: comment
// text, first line, delimiter, type index, variable-count index, x y z node
// counts, header bytes, big/little endian, x/z fastest, bounding box/voxel
// size (1 or 0 each), the three minima and the three maxima or voxel sizes.
//
// Only the delimiter is protected: a single blank or tab is written as
// "Space" or "Tab". Any other text holding a blank (a comment such as "a b"
// or " ") splits into more tokens and every later setting shifts by one on
// the way back; an empty text stays one empty token. Such commands are not
// refused: they replay with the shifted settings.
#include "HxCSVArguments.h"
#include "QxCSVUniformScalarFieldImport.h"
#include "QxLineEdit.h"

namespace {

const char* const settingsKeyword = "CSVUniformScalarField";
const int settingsTokenCount = 22;

McString latin1(const QString& text)
{
    return McString::fromQString(text);
}

// How the delimiter travels: blank and tab by name, a double quote escaped
// for the double quotes around the settings text.
McString encodeDelimiter(const QString& delimiter)
{
    if (delimiter == QLatin1String(" "))
        return McString("Space");
    if (delimiter == QLatin1String("\t"))
        return McString("Tab");
    QString escaped = delimiter;
    escaped.replace(QLatin1Char('"'), QLatin1String("\\\""));
    return latin1(escaped);
}

QString decodeDelimiter(const McString& token)
{
    if (token == "Space")
        return QStringLiteral(" ");
    if (token == "Tab")
        return QStringLiteral("\t");
    return token.toQString();
}

void appendFlags(McString& settings, const QAbstractButton* first, const QAbstractButton* second)
{
    McString pair;
    pair.printf(" %d %d", first->isChecked() ? 1 : 0, second->isChecked() ? 1 : 0);
    settings += pair;
}

void appendTexts(McString& settings, const QString& a, const QString& b, const QString& c)
{
    McString triple;
    triple.printf(" %s %s %s", latin1(a).getString(), latin1(b).getString(), latin1(c).getString());
    settings += triple;
}

void appendNumber(McString& settings, int n)
{
    McString number;
    number.printf(" %d", n);
    settings += number;
}

void appendText(McString& settings, const McString& text)
{
    settings += ' ';
    settings += text;
}

} // namespace

McString QxCSVUniformScalarFieldImport::getSettingsText() const
{
    McString s(settingsKeyword);
    appendText(s, latin1(lineEditCommentMarker->text()));
    appendText(s, latin1(lineEditDataLineNum->text()));
    appendText(s, encodeDelimiter(lineEditColumnDelimiter->text()));
    appendNumber(s, dataTypeOpt->currentIndex());
    appendNumber(s, nDataVarOpt->currentIndex());
    appendTexts(s, dimsTxt0->text(), dimsTxt1->text(), dimsTxt2->text());
    appendText(s, latin1(headerTxt->text()));
    appendFlags(s, bigEndianBtn, littleEndianBtn);
    appendFlags(s, xFastestBtn, zFastestBtn);
    appendFlags(s, bBoxBtn, voxelSizeBtn);
    appendTexts(s, bBoxTxt0->text(), bBoxTxt2->text(), bBoxTxt4->text());
    appendTexts(s, bBoxTxt1->text(), bBoxTxt3->text(), bBoxTxt5->text());
    return s;
}

McString QxCSVUniformScalarFieldImport::getLoadCommandFromDialog() const
{
    McString command;
    command.printf("load -uniform_scalar_field_csv \"%s\" \"%s\" -dataOnly", getFileName().getString(),
                   getSettingsText().getString());
    return command;
}

int QxCSVUniformScalarFieldImport::loadSettingsFromLoadCommand(McString settings)
{
    McDArray<McString> t;
    settings.explode(' ', t);
    if (t.size() < settingsTokenCount)
        return 0;

    lineEditCommentMarker->setText(t[1].toQString());
    lineEditDataLineNum->setText(t[2].toQString());
    lineEditColumnDelimiter->setText(decodeDelimiter(t[3]));
    // Out-of-range numbers are left to the widgets: spin boxes clamp, combo
    // boxes end up without a current entry.
    dataTypeOpt->setCurrentIndex(hxcsv::readInt(t[4].getString()));
    nDataVarOpt->setCurrentIndex(hxcsv::readInt(t[5].getString()));
    dimsTxt0->setValue(hxcsv::readInt(t[6].getString()));
    dimsTxt1->setValue(hxcsv::readInt(t[7].getString()));
    dimsTxt2->setValue(hxcsv::readInt(t[8].getString()));
    headerTxt->setValue(hxcsv::readInt(t[9].getString()));
    const std::pair<QAbstractButton*, int> buttons[] = {
        {bigEndianBtn, 10}, {littleEndianBtn, 11}, {xFastestBtn, 12},
        {zFastestBtn, 13},  {bBoxBtn, 14},         {voxelSizeBtn, 15},
    };
    for (const auto& [button, token] : buttons)
        button->setChecked(hxcsv::readFlag(t[token].getString()));
    const int boxTokens[6] = {16, 19, 17, 20, 18, 21};
    for (int i = 0; i < 6; ++i)
        boxField(i)->setText(t[boxTokens[i]].toQString());
    // The fields now mean what the buttons say; the label is left as it was.
    fieldsHoldMaxima = bBoxBtn->isChecked();
    return 1;
}

void QxCSVUniformScalarFieldImport::prepareReaderImport()
{
    setSingleParse(true);
}

// Every argument after the file, "-dataOnly" included, each followed by one
// blank: argv[1] is the settings text, the rest lies past its 22 tokens.
void QxCSVUniformScalarFieldImport::takeReplayArguments(int argc, const char** argv)
{
    McString settings;
    for (int i = 1; i < argc; ++i) {
        settings += hxcsv::argumentOrEmpty(argc, argv, i);
        settings += ' ';
    }
    loadSettingsFromLoadCommand(settings);
    setQuiet(true);
}
