// The console lines that tell users where the import rules changed what a
// file says (HxCSV::notices), and which line of the file an error means.
#include "ImportNotices.h"

#include <QObject>
#include <cstring>

#include "HxCSV.h"
#include "HxMessage.h"
#include "Utf8.h"

namespace hxcsv {

namespace {

// Bytes as the parser read them (Latin-1), control and invisible ones
// escaped.
QString shown(const McString& text)
{
    static const char hex[] = "0123456789ABCDEF";
    QString out;
    for (int i = 0; i < text.length(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const char* named = c == '\t' ? "\\t" : c == '\r' ? "\\r" : c == '\n' ? "\\n" : c == '\\' ? "\\\\" : nullptr;
        if (named)
            out += QLatin1String(named);
        else if (c < 0x20 || (c >= 0x7F && c <= 0xA0) || c == 0xAD)
            out += QLatin1String("\\x") + QLatin1Char(hex[c >> 4]) + QLatin1Char(hex[c & 15]);
        else
            out += QLatin1Char(static_cast<char>(c));
    }
    return out;
}

QString number(long long n)
{
    return QString::number(n);
}

// "1 record", "2 records".
QString counted(int n, const char* one, const char* many)
{
    return QString::number(n) + QLatin1Char(' ') + QLatin1String(n == 1 ? one : many);
}

bool startsWithMark(const McString& text)
{
    return std::strncmp(text.getString(), utf8ByteOrderMark, 3) == 0;
}

// Header names are texts too; the mark, if the file has one, opens the
// first.
QString utf8HeaderName(const HxCSV& csv)
{
    for (int i = 0; i < csv.columnNames.size(); ++i) {
        const McString& name = csv.columnNames[i];
        const int skip = i == 0 && startsWithMark(name) ? 3 : 0;
        if (holdsMultiByteUtf8(name.getString() + skip, static_cast<size_t>(name.length() - skip)))
            return QObject::tr("; the header name \"%1\" is read as \"%2\"")
                .arg(QString::fromUtf8(name.getString() + skip, name.length() - skip), shown(name));
    }
    return QString();
}

// What reading texts as Latin-1 did; empty when nothing.
QString latin1Notice(const HxCSV& csv)
{
    const HxCSV::Notices& n = csv.notices;
    QString text;
    if (n.byteOrderMark)
        text = QObject::tr("the file starts with a UTF-8 byte-order mark, which is read as part of the first value on "
                           "line 1, so that value is no number; ");
    else if (!csv.columnNames.isEmpty() && startsWithMark(csv.columnNames[0]))
        text = QObject::tr("the file starts with a UTF-8 byte-order mark, which is read as part of the first header "
                           "name; ");
    const HxCSV::Notice& t = n.utf8Texts;
    const QString name = utf8HeaderName(csv);
    if (text.isEmpty() && t.count == 0 && name.isEmpty())
        return text;
    text += QObject::tr("texts are read as Latin-1, so UTF-8 text looks garbled");
    if (t.count > 0)
        text += QObject::tr("; line %1 holds \"%2\", read as \"%3\" (%4 like this)")
                    .arg(number(t.line), QString::fromUtf8(t.text.getString(), t.text.length()), shown(t.text),
                         counted(t.count, "text", "texts"));
    return text + name;
}

void warn(const McString& fileName, const QString& text)
{
    theMsg->warning(fileName.toQString() + QStringLiteral(": ") + text);
}

} // namespace

void warnAboutNotices(const HxCSV& csv, const McString& fileName)
{
    const HxCSV::Notices& n = csv.notices;
    if (const HxCSV::Notice& c = n.continuedRecords; c.count > 0)
        warn(fileName, QObject::tr("line %1 (\"%2\") has %3 fields where %4 are read; the record continued on line "
                                   "%5, so later rows may be shifted (%6 like this)")
                           .arg(number(c.line), shown(c.text), number(n.fieldsOnLine), number(n.fieldsNeeded),
                                number(n.continuedOnLine), counted(c.count, "record", "records")));
    if (const HxCSV::Notice& e = n.collapsedFields; e.count > 0)
        warn(fileName, QObject::tr("line %1 (\"%2\") has an empty field, which is dropped: a run of delimiters "
                                   "counts as one and a delimiter before the first field as none, so the fields after "
                                   "it move left (%3 like this)")
                           .arg(number(e.line), shown(e.text), counted(e.count, "record", "records")));
    const QString latin1 = latin1Notice(csv);
    if (!latin1.isEmpty())
        warn(fileName, latin1);
    if (const HxCSV::Notice& t = n.cutTexts; t.count > 0)
        warn(fileName, QObject::tr("line %1 is longer than a record may be (%2 bytes), so its text is cut there and "
                                   "the rest is read as the next record; later rows may be shifted (%3 like this): "
                                   "\"%4...\"")
                           .arg(number(t.line), number(HxCSV::lineBufferSize - 1), counted(t.count, "text", "texts"),
                                shown(t.text)));
}

void explainParseError(const HxCSV& csv, const McString& fileName)
{
    const HxCSV::Notices& n = csv.notices;
    const QString file = fileName.toQString();
    if (const HxCSV::Notice& f = n.failedRecord; f.count > 0 && f.line > 0)
        theMsg->printf((n.endOfFile ? QObject::tr("%1: the line number above counts data records; the file ends with "
                                                  "line %2: \"%3\"")
                                    : QObject::tr("%1: the line number above counts data records; the record starts on "
                                                  "line %2 of the file: \"%3\""))
                           .arg(file, number(f.line), shown(f.text)));
    if (n.byteOrderMark)
        theMsg->printf(QObject::tr("%1: the file starts with a UTF-8 byte-order mark, which is read as part of the "
                                   "first value on line 1; texts are read as Latin-1")
                           .arg(file));
}

} // namespace hxcsv
