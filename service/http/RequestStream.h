#pragma once

// What the router reads and writes for one request: the request as the front read it (head and decoded body,
// from memory), and the answer, written to the client's socket with a deadline for each part. The answer's head is
// held back and sent with the first part of its body, so a process killed between the two never leaves a client
// (or nginx, which then cannot send the request elsewhere) with a head and no body.

#include "http/FrontConnection.h"

#include <httplib.h>

class RequestStream : public httplib::Stream
{
public:
    RequestStream(const FrontConnection &connection, std::string head, std::chrono::milliseconds writeTimeout);

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char *ptr, size_t size) override;
    ssize_t write(const char *ptr, size_t size) override;
    // Sends what is held back (the head of an answer without a body). False when the client cannot take it.
    bool flush();
    void get_remote_ip_and_port(std::string &ip, int &port) const override;
    void get_local_ip_and_port(std::string &ip, int &port) const override;
    // None: the library would check it against select()'s limit, which this socket never meets.
    socket_t socket() const override { return INVALID_SOCKET; }

private:
    bool waitWritable() const;
    // Both parts in order, in as few calls as the socket takes them.
    bool sendAll(std::string_view first, std::string_view second);

    const FrontConnection &m_connection;
    const std::string m_head;
    size_t m_read = 0;
    std::string m_heldHead;
    bool m_headSeen = false;
    int m_writeTimeoutMs;
};
