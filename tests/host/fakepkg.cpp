// A small package for testing the host: its readers make objects with known
// values, so the host's JSON and exit statuses can be checked on their own.
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <thread>

#include "HxCluster.h"
#include "HxLineSet.h"
#include "HxMessage.h"
#include "HxPackage.h"

static const HxPackageInfo info = {"fakepkg", "0.1", "today", "g++"};

HX_PACKAGE_ENTRY const HxPackageInfo* quenzpackage_fakepkg() { return &info; }

// Prints its arguments, one console line each (an error line for one that
// starts with "error"); fails when one is "fail".
HX_PACKAGE_ENTRY int hxReadFakeEcho(int argc, const char** argv)
{
    int result = 1;
    for (int i = 0; i < argc; ++i) {
        if (std::strncmp(argv[i], "error", 5) == 0)
            theMsg->error(QString::fromUtf8(argv[i]));
        else
            theMsg->printf("arg[%d]=<%s>", i, argv[i]);
        if (std::strcmp(argv[i], "fail") == 0)
            result = 0;
    }
    return result;
}

// An optional argv[1] names both the data and the label column.
HX_PACKAGE_ENTRY int hxReadFakeCluster(int argc, const char** argv)
{
    HxCluster* c = HxCluster::createInstance();
    c->setNumDataColumns(1, McPrimType(3));
    c->setNumLabelColumns(1);
    if (argc > 2)
        c->dataColumns[0].name = c->labelColumns[0].name = argv[1];
    c->resize(3);
    const float inf = std::numeric_limits<float>::infinity();
    const float xs[3] = {0.1f, -1e-38f, 3.4028235e38f}, vs[3] = {std::numeric_limits<float>::quiet_NaN(), inf, -inf};
    for (int i = 0; i < 3; ++i) {
        c->points[i] = McVec3f(xs[i], 2.0f * i, -0.3f);
        c->ids[i] = i + 1;
        c->dataColumns[0].floatData()[i] = vs[i];
        c->labelColumns[0].labels[i] = QString::fromLatin1("l\xe4" "bel \"%1\"").arg(i);
    }
    c->computeBounds();
    HxData::registerData(c, QString::fromLatin1(argv[0]));
    return 1;
}

HX_PACKAGE_ENTRY int hxReadFakeLineSet(int, const char** argv)
{
    HxLineSet* s = HxLineSet::createInstance();
    const McVec3f pts[3] = {McVec3f(0, 0, 0), McVec3f(1, 1, 1), McVec3f(5, 5, 5)};
    s->addPoints(pts, 3);
    const int a[2] = {0, 1}, b[1] = {2};
    s->addLine(2, a, -1);
    s->addLine(1, b, -1);
    s->setNumDataValues(1);
    for (int i = 0; i < 3; ++i)
        s->getData(0)[i] = 0.5f * i;
    HxData::registerData(s, QString::fromLatin1(argv[0]));
    return 1;
}

// Sleeps argv[0] seconds without looking for a stop request, as a reader
// that reports no progress does.
HX_PACKAGE_ENTRY int hxReadFakeSleep(int, const char** argv)
{
    theMsg->printf("sleeping");
    std::this_thread::sleep_for(std::chrono::seconds(std::atoi(argv[0])));
    theMsg->printf("slept");
    return 1;
}
