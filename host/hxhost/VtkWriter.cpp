#include "VtkWriter.h"

namespace hxhost {

bool exportVtk(const std::string&, const std::vector<HxData*>& objects, std::vector<std::string>& errors)
{
    if (objects.empty())
        return true;
    errors.push_back("VTK export is not written yet");
    return false;
}

} // namespace hxhost
