#include "HxCSVParseParameters.h"

HxCSVParseParameters::HxCSVParseParameters()
    : columnIndices(new McDArray<int>)
    , commentMarker(new McString)
    , columnDelimiter(new McString)
{
}

HxCSVParseParameters::~HxCSVParseParameters()
{
    delete columnIndices;
    delete commentMarker;
    delete columnDelimiter;
}
