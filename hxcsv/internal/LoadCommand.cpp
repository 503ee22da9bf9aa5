#include "LoadCommand.h"

#include <cstring>

#include "HxCSV.h"
#include "HxData.h"
#include "HxMessage.h"
#include "HxParameter.h"

namespace hxcsv {

namespace {
const char replayOption[] = "-dataOnly";
}

bool isReplay(int argc, const char** argv)
{
    return argc > 0 && std::strcmp(argumentOrEmpty(argc, argv, argc - 1), replayOption) == 0;
}

const char* argumentOrEmpty(int argc, const char** argv, int i)
{
    if (!argv || i < 0 || i >= argc || !argv[i])
        return "";
    return argv[i];
}

void attachLoadCommand(HxData* data, const McString& command)
{
    if (!data)
        return;
    auto* parameter = new HxParameter(QStringLiteral("LoadCmd"), command.toQString(), 0);
    parameter->setFlag(1, true);
    parameter->setFlag(2, true);
    data->parameters().insert(parameter, 1);
}

void reportParseError(const McString& fileName, const CSVException& e)
{
    reportImportError(fileName, e.message.toQString());
}

void reportImportError(const McString& fileName, const QString& text)
{
    theMsg->error(fileName.toQString() + QStringLiteral(": ") + text);
}

} // namespace hxcsv
