#pragma once

// Base of reference-counted host objects.
class McInterface {
public:
    virtual ~McInterface() = default;
    void ref() { ++mRefCount; }
    void unref()
    {
        if (--mRefCount <= 0)
            delete this;
    }

private:
    int mRefCount = 0;
};

// Intrusive reference-counting pointer to an McInterface.
template <class T>
class McHandle {
public:
    McHandle(T* p = nullptr) : mPtr(p) { if (mPtr) mPtr->ref(); }
    McHandle(const McHandle& o) : mPtr(o.mPtr) { if (mPtr) mPtr->ref(); }
    McHandle& operator=(const McHandle& o)
    {
        if (o.mPtr)
            o.mPtr->ref();
        if (mPtr)
            mPtr->unref();
        mPtr = o.mPtr;
        return *this;
    }
    ~McHandle() { if (mPtr) mPtr->unref(); }
    T* operator->() const { return mPtr; }
    T& operator*() const { return *mPtr; }
    T* ptr() const { return mPtr; }
    explicit operator bool() const { return mPtr != nullptr; }

private:
    T* mPtr;
};
