#pragma once

// An open file descriptor with one owner, closed at its end.

#include <unistd.h>

namespace Place {

class Fd
{
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    ~Fd()
    {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }
    Fd(Fd &&other) noexcept : m_fd(other.m_fd) { other.m_fd = -1; }
    Fd &operator=(Fd &&other) noexcept
    {
        if (this != &other) {
            this->~Fd();
            m_fd = other.m_fd;
            other.m_fd = -1;
        }
        return *this;
    }
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;

    int get() const { return m_fd; }
    bool valid() const { return m_fd >= 0; }

private:
    int m_fd;
};

} // namespace Place
