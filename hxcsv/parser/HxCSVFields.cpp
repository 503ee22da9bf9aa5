// Field splitting by hand where the delimiter allows it, else by the
// pattern that defines it.
#include "HxCSVFields.h"

#include <cstring>

#include <QString>

#include "Latin1.h"

namespace {

int countQuotes(const char* record, int length)
{
    int quotes = 0;
    const char* end = record + length;
    for (const char* p = record; (p = static_cast<const char*>(std::memchr(p, '"', static_cast<size_t>(end - p))));
         ++p)
        ++quotes;
    return quotes;
}

} // namespace

HxCSVFieldSplitter::HxCSVFieldSplitter(const std::string& delimiter) : delimiterText(delimiter)
{
    const QString text = QString::fromLatin1(delimiter.data(), static_cast<int>(delimiter.size()));
    const bool whiteSpace = text == QLatin1String("\\s");
    aligns = whiteSpace || (!delimiter.empty() && delimiter.find_first_not_of(' ') == std::string::npos);
    byHand = whiteSpace || (delimiter.size() == 1 && delimiter[0] != '"');
    if (byHand) {
        if (!whiteSpace)
            single = static_cast<unsigned char>(delimiter[0]);
        for (int c = 0; c < 256; ++c)
            isDelimiter[c] = whiteSpace ? hxcsv::isLatin1Space(c) : c == static_cast<unsigned char>(delimiter[0]);
        return;
    }
    pattern = QRegExp(QRegExp::escape(text) + QLatin1String("+(?=(?:[^\"]*\"[^\"]*\")*(?![^\"]*\"))"), Qt::CaseSensitive,
                      QRegExp::RegExp);
}

bool HxCSVFieldSplitter::split(const char* record, int length, std::vector<HxCSVField>& fields) const
{
    fields.clear();
    const bool dropped =
        byHand ? splitByHand(record, length, fields) : splitByPattern(record, length, fields);
    return dropped && !aligns;
}

// A delimiter is never a quote here, so all of a run has the same number of
// quotes after it: either the whole run splits or none of it does.
bool HxCSVFieldSplitter::splitByHand(const char* record, int length, std::vector<HxCSVField>& fields) const
{
    int quotesAfter = countQuotes(record, length);
    if (quotesAfter == 0 && single >= 0)
        return splitWithoutQuotes(record, length, fields);
    bool dropped = false;
    int fieldBegin = -1; // none open
    for (int i = 0; i < length;) {
        const unsigned char c = static_cast<unsigned char>(record[i]);
        if (!isDelimiter[c]) {
            quotesAfter -= c == '"';
            if (fieldBegin < 0)
                fieldBegin = i;
            ++i;
            continue;
        }
        int runEnd = i + 1;
        while (runEnd < length && isDelimiter[static_cast<unsigned char>(record[runEnd])])
            ++runEnd;
        if (quotesAfter % 2 == 0) {
            // A run splits once; at the start it splits off nothing.
            dropped = dropped || (runEnd < length && (fieldBegin < 0 || runEnd - i > 1));
            if (fieldBegin >= 0)
                fields.push_back({fieldBegin, i - fieldBegin});
            fieldBegin = -1;
        } else if (fieldBegin < 0) {
            fieldBegin = i; // inside quotes the run is text
        }
        i = runEnd;
    }
    if (fieldBegin >= 0)
        fields.push_back({fieldBegin, length - fieldBegin});
    return dropped;
}

// Without quotes every run of the delimiter splits: the fields are what lies
// between, empty ones left out.
bool HxCSVFieldSplitter::splitWithoutQuotes(const char* record, int length, std::vector<HxCSVField>& fields) const
{
    bool dropped = false;
    const char* end = record + length;
    for (const char* p = record; p < end;) {
        const char* q = static_cast<const char*>(std::memchr(p, single, static_cast<size_t>(end - p)));
        if (!q)
            q = end;
        if (q > p)
            fields.push_back({static_cast<int>(p - record), static_cast<int>(q - p)});
        else if (q + 1 < end)
            dropped = true; // not a delimiter that ends the record
        p = q + 1;
    }
    return dropped;
}

// QString::split with a pattern and empty parts skipped, keeping positions.
bool HxCSVFieldSplitter::splitByPattern(const char* record, int length, std::vector<HxCSVField>& fields) const
{
    bool dropped = false;
    const QString text = QString::fromLatin1(record, length);
    int start = 0;
    int extra = 0;
    for (int end; (end = pattern.indexIn(text, start + extra)) != -1;) {
        const int matched = pattern.matchedLength();
        if (end != start)
            fields.push_back({start, end - start});
        else if (matched > 0 && end + matched < length)
            dropped = true;
        start = end + matched;
        extra = matched == 0 ? 1 : 0;
    }
    if (start != length)
        fields.push_back({start, length - start});
    return dropped;
}
