#pragma once

// Builds one result per index on all cores, for work made of many independent pieces (the records of a scan or
// of a loaded store). Results keep the order of their indices.

#include <QThread>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

// make(i) for every i in [0, count), on up to `threads` threads (0: the machine's cores, at most 8; fewer than
// 64 pieces stay on the calling thread). A set cancel flag stops the work early, leaving the remaining results
// default-constructed; an exception thrown by make stops it too and is rethrown here.
template <typename Result, typename Make>
std::vector<Result> parallelMap(qsizetype count, const Make &make, const std::atomic<bool> *cancel = nullptr,
                                int threads = 0)
{
    std::vector<Result> results(size_t(std::max<qsizetype>(count, 0)));
    std::atomic<qsizetype> next{0};
    std::mutex failureMutex;
    std::exception_ptr failure;
    const auto work = [&] {
        try {
            for (qsizetype i = next++; i < count; i = next++) {
                if (cancel && cancel->load(std::memory_order_relaxed)) {
                    return;
                }
                results[size_t(i)] = make(i);
            }
        } catch (...) {
            const std::lock_guard<std::mutex> lock(failureMutex);
            failure = std::current_exception();
            next = count;
        }
    };
    const int wanted = threads > 0 ? threads : std::min(QThread::idealThreadCount(), 8);
    const int helpers = count < 64 ? 0 : wanted - 1;
    std::vector<std::thread> workers;
    // Reserved first: a vector growing after some threads started could throw past them, and a running thread that
    // is destroyed unjoined ends the process.
    workers.reserve(size_t(std::max(helpers, 0)));
    for (int i = 0; i < helpers; ++i) {
        try {
            workers.emplace_back(work);
        } catch (const std::system_error &) {
            break; // no more threads to be had: the ones started, and this one, do the rest
        }
    }
    work();
    for (std::thread &thread : workers) {
        thread.join();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
    return results;
}
