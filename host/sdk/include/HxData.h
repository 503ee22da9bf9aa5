#pragma once
#include <QString>
#include <vector>

#include "HxParameter.h"
#include "HxSdkApi.h"

// Base of every host data object: a name and a bundle of parameters.
class HXSDK_API HxData {
public:
    virtual ~HxData();
    HxData(const HxData&) = delete;
    HxData& operator=(const HxData&) = delete;

    // The C++ class name, e.g. "HxCluster".
    virtual const char* getClassName() const = 0;

    const QString& getName() const { return mName; }
    HxParamBundle& parameters() { return mParameters; }
    const HxParamBundle& parameters() const { return mParameters; }

    // Adds obj to the host's object pool, which then owns it. The object is
    // named after the base name of fileName, made unique within the pool by
    // a numeric suffix ("a.csv", "a.csv2", ...). Returns 1.
    static int registerData(HxData* obj, const QString& fileName);

protected:
    HxData() = default;

private:
    friend class HxObjectPool;
    QString mName;
    HxParamBundle mParameters;
};

// The host's object pool: every registered object, in registration order.
class HXSDK_API HxObjectPool {
public:
    static HxObjectPool* instance();
    ~HxObjectPool();
    const std::vector<HxData*>& objects() const { return mObjects; }
    void add(HxData* obj, const QString& baseName);
    // Deletes every object.
    void clear();

private:
    std::vector<HxData*> mObjects;
};
