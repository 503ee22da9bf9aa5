// The practical limit for turning CSV text into numbers: read the file in large
// blocks, split on one delimiter byte and line ends, convert every field with
// fast_float and store all values in one float vector. Importers are measured
// against this loop.
//
//   fastfloat_reader [--delimiter C] [--skip N] [--text COLUMN]... FILE
//
// --skip drops the first N lines (a header row); fields of a --text column
// (0-based) are kept as bytes instead of being converted. Empty fields (runs of
// delimiters) are skipped. Prints the value count, a checksum that keeps the
// work from being optimised away, and the seconds spent reading.
#include <fast_float/fast_float.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

struct Options {
    char delimiter = ',';
    long skip = 0;
    std::vector<bool> textColumn;
    const char* file = nullptr;
};

struct Result {
    std::vector<float> values;
    std::vector<char> text;          // text fields, back to back
    std::vector<size_t> textEnds;    // end offset of each text field in text
};

[[noreturn]] void fail(const std::string& message)
{
    std::fprintf(stderr, "fastfloat_reader: %s\n", message.c_str());
    std::exit(1);
}

Options parseOptions(int argc, char** argv)
{
    Options o;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        bool hasValue = i + 1 < argc;
        if (a == "--delimiter" && hasValue) {
            std::string d = argv[++i];
            o.delimiter = d == "\\t" ? '\t' : d.empty() ? ',' : d[0];
        } else if (a == "--skip" && hasValue) {
            o.skip = std::strtol(argv[++i], nullptr, 10);
        } else if (a == "--text" && hasValue) {
            long c = std::strtol(argv[++i], nullptr, 10);
            if (c < 0 || c > 4096)
                fail("bad --text column " + std::string(argv[i]));
            if (o.textColumn.size() <= size_t(c))
                o.textColumn.resize(c + 1, false);
            o.textColumn[c] = true;
        } else if (a[0] != '-' && !o.file) {
            o.file = argv[i];
        } else {
            fail("usage: fastfloat_reader [--delimiter C] [--skip N] [--text COLUMN]... FILE");
        }
    }
    if (!o.file)
        fail("no file given");
    return o;
}

class Reader {
public:
    Reader(const Options& o, Result& r) : mOpt(o), mOut(r), mSkip(o.skip) {}

    // Handles one line without its line end.
    void line(const char* p, const char* end)
    {
        ++mLine;
        if (end > p && end[-1] == '\r')
            --end;
        if (mSkip > 0) {
            --mSkip;
            return;
        }
        size_t column = 0;
        while (p < end) {
            const char* stop = static_cast<const char*>(std::memchr(p, mOpt.delimiter, end - p));
            if (!stop)
                stop = end;
            if (stop > p)
                field(p, stop, column++);
            p = stop + 1;
        }
    }

private:
    void field(const char* p, const char* end, size_t column)
    {
        if (column < mOpt.textColumn.size() && mOpt.textColumn[column]) {
            mOut.text.insert(mOut.text.end(), p, end);
            mOut.textEnds.push_back(mOut.text.size());
            return;
        }
        float v;
        auto r = fast_float::from_chars(p, end, v);
        if (r.ec != std::errc() || r.ptr != end)
            fail("line " + std::to_string(mLine) + ": not a number: '" + std::string(p, end) + "'");
        mOut.values.push_back(v);
    }

    const Options& mOpt;
    Result& mOut;
    long mSkip;
    long mLine = 0;
};

void readFile(const Options& o, Result& out)
{
    int fd = open(o.file, O_RDONLY);
    if (fd < 0)
        fail(std::string("cannot open ") + o.file);
    struct stat st;
    if (fstat(fd, &st) != 0)
        fail(std::string("cannot stat ") + o.file);
    // Every field takes at least two bytes: reserving once for the most the file
    // can hold keeps the vectors from moving; pages never written cost nothing.
    const size_t maxFields = size_t(st.st_size) / 2 + 1;
    out.values.reserve(maxFields);
    if (!o.textColumn.empty()) {
        out.text.reserve(size_t(st.st_size));
        out.textEnds.reserve(maxFields);
    }

    Reader reader(o, out);
    std::vector<char> buffer(size_t(4) << 20);
    size_t kept = 0; // bytes of an unfinished line at the start of buffer
    for (;;) {
        if (kept == buffer.size())
            buffer.resize(buffer.size() * 2); // a line longer than the buffer
        ssize_t n = read(fd, buffer.data() + kept, buffer.size() - kept);
        if (n < 0)
            fail(std::string("cannot read ") + o.file);
        const char* p = buffer.data();
        const char* end = p + kept + size_t(n);
        if (n == 0) {
            if (end > p)
                reader.line(p, end);
            break;
        }
        while (const char* nl = static_cast<const char*>(std::memchr(p, '\n', end - p))) {
            reader.line(p, nl);
            p = nl + 1;
        }
        kept = size_t(end - p);
        std::memmove(buffer.data(), p, kept);
    }
    close(fd);
}

} // namespace

int main(int argc, char** argv)
{
    Options o = parseOptions(argc, argv);
    auto start = std::chrono::steady_clock::now();
    Result r;
    readFile(o, r);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    double sum = 0;
    for (float v : r.values)
        sum += v;
    std::printf("values %zu text %zu checksum %.6g\nREAD_SECONDS %.4f\n", r.values.size(),
                r.textEnds.size(), sum, seconds);
    return 0;
}
