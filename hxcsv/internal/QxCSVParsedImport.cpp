#include "QxCSVParsedImport.h"

#include "HxCSVUtils.h"
#include "ImportCourse.h"

QxCSVParsedImport::~QxCSVParsedImport() = default;

void QxCSVParsedImport::setParseParameters(HxCSVParseParameters* p)
{
    if (p != params.get())
        params.reset(p);
}

void QxCSVParsedImport::setupLoadCommand()
{
    if (createdData && params)
        hxcsv::attachLoadCommand(createdData, loadCommand());
}

void QxCSVParsedImport::recordLoadCommand()
{
    setParseParameters(HxCSVUtils::getParseParameters(this));
    setupLoadCommand();
}

HxCSVParseParameters* QxCSVParsedImport::currentParseParameters()
{
    if (!params)
        params.reset(HxCSVUtils::getParseParameters(this));
    return params.get();
}
