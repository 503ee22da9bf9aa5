#pragma once
#include <QString>
#include <vector>

#include "HxSdkApi.h"

// Base of data parameters. Flags are small integers whose meaning is the
// host's; a parameter starts with none set.
class HXSDK_API HxParamBase {
public:
    explicit HxParamBase(const QString& name) : mName(name) {}
    virtual ~HxParamBase();
    const QString& getName() const { return mName; }
    void setFlag(int flag, bool on);
    bool getFlag(int flag) const;
    unsigned getFlags() const { return mFlags; }

private:
    QString mName;
    unsigned mFlags = 0;
};

// A named text value.
class HXSDK_API HxParameter : public HxParamBase {
public:
    HxParameter(const QString& name, const QString& value, int reserved = 0);
    const QString& getString() const { return mValue; }
    void setString(const QString& v) { mValue = v; }

private:
    QString mValue;
};

// An ordered, owning collection of parameters.
class HXSDK_API HxParamBundle : public HxParamBase {
public:
    explicit HxParamBundle(const QString& name = QString()) : HxParamBase(name) {}
    ~HxParamBundle() override;
    HxParamBundle(const HxParamBundle&) = delete;
    HxParamBundle& operator=(const HxParamBundle&) = delete;

    // Takes ownership of p. Mode 1 replaces a parameter of the same name in
    // place (the old one is deleted); mode 0 always appends.
    void insert(HxParamBase* p, int mode = 1);
    int size() const { return static_cast<int>(mItems.size()); }
    HxParamBase* at(int i) const { return mItems[i]; }
    HxParamBase* find(const QString& name) const;

private:
    std::vector<HxParamBase*> mItems;
};
