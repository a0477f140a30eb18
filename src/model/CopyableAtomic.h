#pragma once

// An atomic value that a record can be copied with: the copy takes the value it holds at that moment. For the fields
// that one thread writes while others read them (a download's progress while the rows draw it).

#include <atomic>

template <typename T> class CopyableAtomic : public std::atomic<T>
{
public:
    CopyableAtomic(T value = T()) noexcept : std::atomic<T>(value) {}
    CopyableAtomic(const CopyableAtomic &other) noexcept : std::atomic<T>(other.load()) {}
    CopyableAtomic &operator=(const CopyableAtomic &other) noexcept
    {
        this->store(other.load());
        return *this;
    }
    using std::atomic<T>::operator=;
};
