// Data objects and the pool that owns and names them.
#include "HxData.h"

#include <QFileInfo>

HxData::~HxData() = default;

int HxData::registerData(HxData* obj, const QString& fileName)
{
    if (!obj)
        return 0;
    HxObjectPool::instance()->add(obj, QFileInfo(fileName).fileName());
    return 1;
}

HxObjectPool* HxObjectPool::instance()
{
    static HxObjectPool pool;
    return &pool;
}

HxObjectPool::~HxObjectPool()
{
    clear();
}

void HxObjectPool::add(HxData* obj, const QString& baseName)
{
    for (HxData* o : mObjects)
        if (o == obj)
            return;
    QString base = baseName.isEmpty() ? QString::fromLatin1(obj->getClassName()) : baseName;
    QString name = base;
    for (int n = 2;; ++n) {
        bool taken = false;
        for (HxData* o : mObjects)
            taken = taken || o->mName == name;
        if (!taken)
            break;
        name = base + QString::number(n);
    }
    obj->mName = name;
    mObjects.push_back(obj);
}

void HxObjectPool::clear()
{
    for (HxData* o : mObjects)
        delete o;
    mObjects.clear();
}
