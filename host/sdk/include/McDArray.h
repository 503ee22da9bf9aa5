#pragma once
#include <cstring>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "McMalloc.h"

// The host's growable array. When it must grow it takes the larger of the
// size asked for and one and a half times its current size, so a run of
// append() calls is amortised and a single resize() allocates exactly.
// New elements of trivial types are not cleared.
template <class T>
class McDArray {
public:
    McDArray() = default;
    explicit McDArray(int n) { resize(n); }
    McDArray(const McDArray& o) { assign(o); }
    McDArray(McDArray&& o) noexcept
        : mData(o.mData), mSize(o.mSize), mCapacity(o.mCapacity)
    {
        o.mData = nullptr;
        o.mSize = o.mCapacity = 0;
    }
    McDArray& operator=(const McDArray& o)
    {
        if (this != &o) {
            clear();
            assign(o);
        }
        return *this;
    }
    McDArray& operator=(McDArray&& o) noexcept
    {
        if (this != &o) {
            release();
            mData = o.mData;
            mSize = o.mSize;
            mCapacity = o.mCapacity;
            o.mData = nullptr;
            o.mSize = o.mCapacity = 0;
        }
        return *this;
    }
    ~McDArray() { release(); }

    int size() const { return mSize; }
    int capacity() const { return mCapacity; }
    bool isEmpty() const { return mSize == 0; }

    T* dataPtr() { return mData; }
    const T* dataPtr() const { return mData; }
    T* begin() { return mData; }
    T* end() { return mData + mSize; }
    const T* begin() const { return mData; }
    const T* end() const { return mData + mSize; }

    T& operator[](int i) { return mData[i]; }
    const T& operator[](int i) const { return mData[i]; }
    T& last() { return mData[mSize - 1]; }
    const T& last() const { return mData[mSize - 1]; }

    // Negative sizes count as 0.
    void resize(int n)
    {
        if (n < 0)
            n = 0;
        if (n > mCapacity)
            grow(n);
        if (n > mSize) {
            for (int i = mSize; i < n; ++i)
                new (mData + i) T;
        } else {
            destroy(n, mSize);
        }
        mSize = n;
    }

    // Makes room for n elements without changing the size.
    void remax(int n)
    {
        if (n > mCapacity)
            reallocate(n);
    }

    void append(const T& x)
    {
        if (mSize == mCapacity) {
            T copy(x); // x may live inside this array
            grow(mSize + 1);
            new (mData + mSize) T(std::move(copy));
        } else {
            new (mData + mSize) T(x);
        }
        ++mSize;
    }

    void clear() { resize(0); }

    // Fills every element with x.
    void fill(const T& x)
    {
        for (int i = 0; i < mSize; ++i)
            mData[i] = x;
    }

private:
    void grow(int needed)
    {
        long long wanted = static_cast<long long>(mSize) * 3 / 2;
        if (wanted < needed)
            wanted = needed;
        if (wanted > 0x7fffffff)
            wanted = 0x7fffffff;
        reallocate(static_cast<int>(wanted));
    }

    void reallocate(int cap)
    {
        T* p;
        if constexpr (std::is_trivially_copyable<T>::value) {
            p = static_cast<T*>(mcrealloc(mData, static_cast<size_t>(cap) * sizeof(T)));
            if (!p && cap > 0)
                throw std::bad_alloc();
        } else {
            p = static_cast<T*>(mcmalloc(static_cast<size_t>(cap) * sizeof(T)));
            if (!p && cap > 0)
                throw std::bad_alloc();
            for (int i = 0; i < mSize; ++i) {
                new (p + i) T(std::move(mData[i]));
                mData[i].~T();
            }
            mcfree(mData);
        }
        mData = p;
        mCapacity = cap;
    }

    void destroy(int from, int to)
    {
        if constexpr (!std::is_trivially_destructible<T>::value)
            for (int i = from; i < to; ++i)
                mData[i].~T();
    }

    void assign(const McDArray& o)
    {
        if (o.mSize > mCapacity)
            reallocate(o.mSize);
        for (int i = 0; i < o.mSize; ++i)
            new (mData + i) T(o.mData[i]);
        mSize = o.mSize;
    }

    void release()
    {
        destroy(0, mSize);
        mcfree(mData);
        mData = nullptr;
        mSize = mCapacity = 0;
    }

    T* mData = nullptr;
    int mSize = 0;
    int mCapacity = 0;
};
