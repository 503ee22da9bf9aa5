#pragma once
// Field splitting: a record's bytes split into fields (begin, length),
// where the record reader did not note them as it read; for its test of a
// record's numbers and for the row conversion (Rows.cpp).
#include <cstring>
#include <string>
#include <vector>

#include <QRegExp>

#include "McString.h"

// One field of a record: where it starts and how many bytes it has.
struct HxCSVField {
    int begin;
    int length;
};

// Splits a record (Latin-1 bytes) at the column delimiter as the pattern
//   DELIMITER+(?=(?:[^"]*"[^"]*")*(?![^"]*"))
// with empty parts skipped does: a run of delimiters splits only where an
// even number of double quotes follows up to the end of the record, so that
// quoted stretches keep their delimiters; runs count once and no field is
// empty. The delimiter is escaped, except "\s", which means white space.
//
// A one-character delimiter other than the quote, and "\s", are split by
// hand; others (none, several characters, the quote itself, whose pattern
// reads differently) go through the pattern itself.
class HxCSVFieldSplitter {
public:
    explicit HxCSVFieldSplitter(const std::string& delimiter);

    bool splitsAt(const McString& delimiter) const
    {
        return delimiterText.size() == static_cast<size_t>(delimiter.length())
               && std::memcmp(delimiterText.data(), delimiter.getString(), delimiterText.size()) == 0;
    }

    // Replaces fields by those of [record, record + length). True when an
    // empty field was dropped: between two delimiters of a run, or before
    // the first field; never for runs of blanks or of white space ("\s"),
    // which align columns.
    bool split(const char* record, int length, std::vector<HxCSVField>& fields) const;

private:
    // These return whether an empty field was dropped, whatever the delimiter.
    bool splitByHand(const char* record, int length, std::vector<HxCSVField>& fields) const;
    bool splitWithoutQuotes(const char* record, int length, std::vector<HxCSVField>& fields) const;
    bool splitByPattern(const char* record, int length, std::vector<HxCSVField>& fields) const;

    std::string delimiterText;
    bool byHand = false;
    int single = -1; // the delimiter when it is one character
    bool aligns = false; // blanks or white space: runs are no empty fields
    bool isDelimiter[256] = {};
    QRegExp pattern;
};
