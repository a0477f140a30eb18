#pragma once

// A value behind its own mutex, for a field that one thread writes while others read it and that is too large to be
// atomic (a failure text). Copying takes the value as it is at that moment.

#include <mutex>
#include <utility>

template <typename T> class GuardedValue
{
public:
    GuardedValue() = default;
    GuardedValue(T value) : m_value(std::move(value)) {}
    GuardedValue(const GuardedValue &other) : m_value(other.load()) {}
    GuardedValue &operator=(const GuardedValue &other)
    {
        store(other.load());
        return *this;
    }
    GuardedValue &operator=(T value)
    {
        store(std::move(value));
        return *this;
    }

    T load() const
    {
        const std::lock_guard lock(m_mutex);
        return m_value;
    }
    void store(T value)
    {
        const std::lock_guard lock(m_mutex);
        m_value = std::move(value);
    }
    operator T() const { return load(); }

private:
    mutable std::mutex m_mutex;
    T m_value{};
};
