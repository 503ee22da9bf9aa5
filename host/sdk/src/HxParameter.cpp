// Named text parameters and the bundles that own them.
#include "HxParameter.h"

HxParamBase::~HxParamBase() = default;

void HxParamBase::setFlag(int flag, bool on)
{
    if (flag < 0 || flag >= 32)
        return;
    if (on)
        mFlags |= 1u << flag;
    else
        mFlags &= ~(1u << flag);
}

bool HxParamBase::getFlag(int flag) const
{
    return flag >= 0 && flag < 32 && (mFlags & (1u << flag));
}

HxParameter::HxParameter(const QString& name, const QString& value, int)
    : HxParamBase(name), mValue(value)
{
}

HxParamBundle::~HxParamBundle()
{
    for (HxParamBase* p : mItems)
        delete p;
}

void HxParamBundle::insert(HxParamBase* p, int mode)
{
    if (!p)
        return;
    if (mode == 1) {
        for (HxParamBase*& existing : mItems) {
            if (existing->getName() == p->getName()) {
                if (existing != p)
                    delete existing;
                existing = p;
                return;
            }
        }
    }
    mItems.push_back(p);
}

HxParamBase* HxParamBundle::find(const QString& name) const
{
    for (HxParamBase* p : mItems)
        if (p->getName() == name)
            return p;
    return nullptr;
}
