#pragma once
// The CSV parser's rules over a whole file held in memory, stated as plainly
// as they go: the oracle of the parser's differential tests. It shares no
// code with the parser; numbers go through Qt and the C library.
#include <QRegExp>
#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <strings.h>
#include <vector>

namespace oracle {

// Bindings by the addColumn form that makes them.
enum Kind { Raw, FloatVector, DoubleVector, Text, Float, Double, Unbuffered, TextNumber, FloatRows, TextRows, Kinds };

struct Binding {
    int kind, index;
    int type;      // of Raw and Unbuffered: 0 byte, 1 short, 7 ushort, 2 int32, 3 float, 4 double
    int component; // of a vector
    int target;    // which of two vector arrays
};

struct CsvSettings {
    std::string delimiter = ",", comment, breakText;
    bool header = false, headerFlagFirst = true; // the flag set before the start line, or after it
    int start = 1;
    bool noLineBreaks = false, plainLines = false, ignoreColumnCount = false;
    std::vector<Binding> bindings;
};

// What a parse leaves behind, as texts by name: "outcome"; each target row
// by row, by key(); "bN misses" (count, first row, first text); "breaks";
// "names"; "joined" (count, continued).
using CsvResult = std::map<std::string, std::vector<std::string>>;

inline std::string describe(const CsvResult& r)
{
    std::string s;
    for (const auto& [name, values] : r) {
        s += name + ":";
        for (const std::string& v : values)
            s += "|" + v;
        s += "\n";
    }
    return s;
}

// Binding i's own array, or the vector array and component it shares.
inline std::string key(const Binding& b, size_t i)
{
    if (b.kind != FloatVector && b.kind != DoubleVector)
        return "b" + std::to_string(i);
    return (b.kind == FloatVector ? "vf" : "vd") + std::to_string(b.target) + "." + std::to_string(b.component);
}

template <class T>
std::string text(T v)
{
    char s[40];
    std::snprintf(s, sizeof s, "%.*g", sizeof v == 4 ? 9 : 17, static_cast<double>(v));
    return s;
}

// Vector rows and caller-sized rows hold this until the parse writes them.
constexpr float unwritten = -7.5f;

struct Failure {
    int code;
    std::string message;
};

class Csv {
public:
    Csv(const std::string& file, const CsvSettings& s) : file(file), s(s)
    {
        for (const Binding& b : s.bindings)
            lastIndex = std::max(lastIndex, b.index);
        const QString d = QString::fromLatin1(s.delimiter.c_str());
        pattern = QRegExp((d == "\\s" ? d : QRegExp::escape(d)) + "+(?=(?:[^\"]*\"[^\"]*\")*(?![^\"]*\"))");
    }

    // parse: the header, a pass that counts the records, and one that
    // reads as many rows.
    CsvResult parse()
    {
        std::string r;
        if (s.header && fgetline(r)) { // no quotes, angle brackets blank; split at the delimiter's first character
            const QString line = QString::fromLatin1(r.c_str()).remove('"').replace('<', ' ').replace('>', ' ');
            for (QString name : line.split(QChar(first(s.delimiter)))) {
                while (name.size() > 1 && name.endsWith(' ')) // a name of blanks keeps one
                    name.chop(1);
                while (name.size() > 1 && name.startsWith(' '))
                    name.remove(0, 1);
                result["names"].push_back(name.toLatin1().toStdString());
            }
        }
        // The header flag, set before the start line, moves a start of 1 to 2.
        const int start = s.header && s.headerFlagFirst && s.start == 1 ? 2 : s.start;
        int count = 0, read = 0;
        skip(start - 1);
        while (s.plainLines ? piece(r) : record(r, count)) // plain lines: markers in full, case ignored
            count += s.plainLines && !startsNoCase(r, s.comment) && !startsNoCase(r, s.breakText);
        skip(start - 1);
        joined = 0; // the reading starts afresh
        continued = false;
        size(count);
        result["outcome"] = {"returned 1"};
        try {
            for (long long row = 0, line = start; row < count; ++line) {
                if (!(s.plainLines ? fgetline(r) : record(r, read)))
                    throw Failure{3, "Unexpected end of file (line " + std::to_string(line) + ")"};
                if (s.comment.empty() || r.c_str()[0] != s.comment[0]) // the first character only
                    row += store(r, static_cast<int>(row)) != -2;
            }
        } catch (const Failure& f) {
            result["outcome"] = {"threw " + std::to_string(f.code) + " " + f.message};
        }
        result["joined"] = {std::to_string(joined), std::to_string(continued)};
        return result;
    }

    // csvGetLine: false at the end of the file. A record needs lastIndex +
    // 1 + joined fields; a line feed inside it counts as a delimiter.
    bool record(std::string& r, int& count)
    {
        const int delimiter = first(s.delimiter), breakChar = first(s.breakText), comment = first(s.comment);
        const std::string stored = delimiter ? std::string(1, char(delimiter)) : "";
        for (;;) {
            enum { Open, ByCount, ByBreak, Other } end = Open;
            enum { Data, Comment, Break } kind = Data;
            bool lineEnd = false;
            long long delimiters = 0;
            r.clear();
            // When the fields are complete, a data record whose float or
            // double field does not convert loses its first field and reads
            // one more; once a pass.
            const auto complete = [&](decltype(end) how) {
                if (kind != Data || continued)
                    return how;
                const QStringList fields = split(r);
                for (const Binding& b : s.bindings) {
                    bool ok = true;
                    if (b.index < 0 || b.index >= fields.size())
                        continue;
                    if (b.kind == Double)
                        fields[b.index].toDouble(&ok);
                    if (b.kind == Float || b.kind == FloatRows)
                        fields[b.index].toFloat(&ok);
                    if (ok)
                        continue;
                    ++joined;
                    continued = true;
                    r.clear();
                    for (int i = 1; i < fields.size(); ++i)
                        r += fields[i].toLatin1().toStdString() + stored;
                    delimiters = fields.size() - 1;
                    return Open;
                }
                return how;
            };
            while (end == Open) {
                const int c = at < file.size() ? static_cast<unsigned char>(file[at++]) : EOF;
                if (c == EOF && r.empty())
                    return false;
                if (c == EOF) {
                    end = Other;
                } else if (c == '\r' || c == 0 || (c == '\t' && delimiter != '\t')) { // dropped
                } else if (r.empty()) { // leading line feeds and delimiters make nothing
                    if (c == '\n' || c == delimiter)
                        continue;
                    kind = c == comment ? Comment : c == breakChar ? Break : Data;
                    r += char(c);
                    for (; kind == Comment && at < file.size() && file[at - 1] != '\n'; ++at)
                        r += r.size() < 2047 ? std::string(1, file[at]) : ""; // up to its line feed, as far as it fits
                    end = kind == Comment ? Other : Open;
                } else if (c == '\n' || c == delimiter) {
                    lineEnd = lineEnd || c == '\n';
                    if (r.back() == char(delimiter)) { // a run counts once
                    } else if (delimiter && r.size() >= 2047) { // the buffer is full: read it again
                        --at;
                        end = Other;
                    } else {
                        r += stored;
                        if (++delimiters == lastIndex + 1 + joined)
                            end = complete(ByCount);
                    }
                    if (end == Open && c == '\n' && kind == Break) // a break ends with its line
                        end = Other;
                } else if (c == breakChar && kind != Break) { // fills the count, then starts the next record
                    --at;
                    delimiters = lastIndex + 1 + joined;
                    end = complete(ByBreak);
                } else if (r.size() >= 2047) { // the buffer is full: the rest starts the next record
                    --at;
                    end = Other;
                } else {
                    r += char(c);
                }
            }
            if (end == ByCount && !lineEnd && !s.noLineBreaks) // fields past the needed ones go
                at = std::min(file.find('\n', at), file.size() - 1) + 1;
            if (kind == Break && count == 0) // no block break before the first data
                continue;
            count += kind == Data;
            return true;
        }
    }

    // resizeDataStorage: numbers cleared, vectors and caller-sized rows as they were.
    void size(int rows)
    {
        for (size_t i = 0; i < s.bindings.size(); ++i) {
            const int kind = s.bindings[i].kind;
            const bool kept = kind == FloatVector || kind == DoubleVector || kind == FloatRows;
            const bool texts = kind == Text || kind == TextRows;
            if (kind != Unbuffered)
                result[key(s.bindings[i], i)].assign(rows, kept ? text(unwritten) : texts ? "" : "0");
            if (kind == TextNumber)
                result[key(s.bindings[i], i) + " misses"] = {"0", "-1", ""};
        }
    }

    // processLine: a comment or a break (the whole marker, case sensitive),
    // or a row stored at rowIndex, a value that does not convert as 0.
    int store(const std::string& record, int rowIndex)
    {
        const auto startsWith = [&](const std::string& marker) {
            return !marker.empty() && record.compare(0, marker.size(), marker) == 0;
        };
        if (startsWith(s.comment))
            return -2;
        if (startsWith(s.breakText)) {
            result["breaks"].push_back(std::to_string(rowIndex));
            return -2;
        }
        const QStringList fields = split(record);
        const Failure columns{2, "Unexpected number of columns (line " + std::to_string(rowIndex) + ")"};
        if (!s.ignoreColumnCount && fields.size() < lastIndex + 1)
            throw columns;
        for (size_t p = 0; p < s.bindings.size(); ++p) {
            const Binding& b = s.bindings[p];
            if (b.index < 0)
                continue;
            // A short record feeds its first field to the bindings past its end.
            const int i = s.ignoreColumnCount && fields.size() <= static_cast<int>(p) ? 0 : b.index;
            if (i >= fields.size())
                throw columns;
            const QString& f = fields[i];
            const std::string unquoted = (f.startsWith('"') ? f.mid(1, f.size() - 2) : f).toLatin1().toStdString();
            bool ok = true;
            std::string value;
            if (b.kind == Double || b.kind == DoubleVector) { // vectors of doubles go through float
                const double v = f.toDouble(&ok);
                value = b.kind == Double ? text(ok ? v : 0.0) : text(double(float(ok ? v : 0.0)));
            } else if (b.kind == Text || b.kind == TextRows) {
                value = unquoted;
            } else if (b.kind == TextNumber) { // strtod; a text not wholly a number is a miss
                char* end = nullptr;
                value = text(static_cast<float>(std::strtod(unquoted.c_str(), &end)));
                std::vector<std::string>& misses = result[key(b, p) + " misses"];
                if (end == unquoted.c_str() || end[std::strspn(end, " \t")] != '\0') {
                    if (misses[0] == "0")
                        misses = {"0", std::to_string(rowIndex), unquoted};
                    misses[0] = std::to_string(std::stoi(misses[0]) + 1);
                }
            } else if ((b.kind == Raw || b.kind == Unbuffered) && b.type == 2) {
                value = std::to_string(f.toInt(&ok, 10));
            } else if ((b.kind == Raw || b.kind == Unbuffered) && b.type != 3) {
                continue; // never written, never fails
            } else {
                const float v = f.toFloat(&ok);
                value = text(ok ? v : 0.0f);
            }
            if (b.kind != Unbuffered)
                result[key(b, p)][static_cast<size_t>(rowIndex)] = value;
            if (!ok)
                throw Failure{3, "Could not convert the column value to a number (line " + std::to_string(rowIndex)
                                     + ", column value " + f.toLatin1().toStdString() + ")"};
        }
        return 1;
    }

    CsvResult result;
    int joined = 0; // the record reader's state
    bool continued = false;

private:
    static int first(const std::string& t) { return static_cast<unsigned char>(t.c_str()[0]); }

    static bool startsNoCase(const std::string& line, const std::string& marker)
    {
        return !marker.empty() && strncasecmp(line.c_str(), marker.c_str(), marker.size()) == 0;
    }

    // fgets into 2048 bytes: at most 2047, through a line feed.
    bool piece(std::string& p)
    {
        if (at >= file.size())
            return false;
        const size_t lf = file.find('\n', at);
        p = file.substr(at, std::min<size_t>(2047, (lf == std::string::npos ? file.size() : lf + 1) - at));
        at += p.size();
        return true;
    }

    // A piece up to its first NUL, without trailing CR and LF.
    bool fgetline(std::string& line)
    {
        if (!piece(line))
            return false;
        line = line.c_str();
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n'))
            line.pop_back();
        return true;
    }

    // Lines before the start, from the top of the file.
    void skip(long long lines)
    {
        std::string p;
        for (at = 0; lines > 0 && piece(p); --lines) {
        }
    }

    QStringList split(const std::string& r) const
    {
        return QString::fromLatin1(r.data(), static_cast<int>(r.size())).split(pattern, Qt::SkipEmptyParts);
    }

    const std::string& file;
    const CsvSettings& s;
    int lastIndex = 0;
    QRegExp pattern;
    size_t at = 0; // read position
};

} // namespace oracle
