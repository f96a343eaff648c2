// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_THREADEDBUFFER_H
#define KOVANTA_THREADEDBUFFER_H

#include "Kovanta/Image.h"

#include <boost/thread/condition_variable.hpp>
#include <boost/thread/exceptions.hpp>
#include <boost/thread/lock_guard.hpp>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/thread.hpp>

#include <deque>
#include <type_traits>
#include <utility>

namespace Ko {

/// @addtogroup videoout
/// @{

/// A bounded queue that hands values from producer to consumer threads, oldest first.
///
/// It holds values of its own: what was put in is independent of the caller's object afterwards. T needs a copy
/// constructor only; values travel by move where T has one. The capacity is 100 and a full queue holds the producer up,
/// until setCapacity() and setDropOldest() say otherwise.
///
/// Thread-safe, for any number of producers and consumers. put() and get() are interruption points of Boost while they
/// wait, and only then; in a program compiled without Boost's interruptions nothing ends a wait but the other side. The
/// destructor wakes nobody: stop all threads first.
/// @throws boost::thread_resource_error from the constructor
template <class T>
class ThreadedBuffer {
public:
    ThreadedBuffer() = default;
    ThreadedBuffer(const ThreadedBuffer&) = delete;
    ThreadedBuffer& operator=(const ThreadedBuffer&) = delete;
    ~ThreadedBuffer() = default;

    /// Appends a value. When exactly as many values are queued as the capacity says, it waits until that has changed,
    /// or, with setDropOldest(), throws the oldest value away. A queue that is longer than its capacity, because that
    /// was lowered, counts as not full. Capacity 0 waits for ever on an empty queue, and drops nothing from it.
    ///
    /// An image that wraps foreign memory is copied, also when it was moved in.
    /// @throws boost::thread_interrupted when the thread is interrupted while it waits; nothing is queued then
    /// @throws what copying T throws; the queue is then as it was
    void put(T value);

    /// Removes the oldest value and returns it; waits while there is none.
    ///
    /// A consumer that is asked to stop is given every queued value first: the interruption leaves from the first wait
    /// on an empty queue. An interruption that meets a value stays requested, and the thread's next interruption point
    /// throws, wherever that is.
    /// @throws boost::thread_interrupted when the thread is interrupted while it waits
    /// @throws what copying T throws; the queue is then as it was
    T get();

    /// Sets the most values that the queue holds. Wakes nobody and trims nothing.
    void setCapacity(unsigned int n);
    /// Sets what a full queue does with a new value: true throws the oldest away, false makes the producer wait.
    void setDropOldest(bool drop);

private:
    using Lock = boost::unique_lock<boost::mutex>;

    static bool isSelfContained(const T& value);
    void append(T& value);
    void waitForValue(Lock& lock);

    boost::mutex mutex;
    boost::condition_variable condition; // One for both sides, so every change wakes all that wait.
    unsigned int capacity = 100;
    std::deque<T> queue;
    bool dropOldest = false;
};

template <class T>
void ThreadedBuffer<T>::put(T value) {
    Lock lock(mutex);
    if (!dropOldest)
        while (queue.size() == capacity)
            condition.wait(lock);
    const bool full = !queue.empty() && queue.size() == capacity;
    append(value);
    if (full)
        queue.pop_front();
    condition.notify_all();
}

template <class T>
T ThreadedBuffer<T>::get() {
    Lock lock(mutex);
    while (queue.empty())
        waitForValue(lock);
    T value(std::move(queue.front()));
    queue.pop_front();
    condition.notify_all();
    return value;
}

template <class T>
void ThreadedBuffer<T>::setCapacity(unsigned int n) {
    const Lock lock(mutex);
    capacity = n;
}

template <class T>
void ThreadedBuffer<T>::setDropOldest(bool drop) {
    const Lock lock(mutex);
    dropOldest = drop;
}

/// Whether a moved value stays good when what its maker refers to is gone.
template <class T>
bool ThreadedBuffer<T>::isSelfContained(const T& value) {
    if constexpr (std::is_same_v<T, Image<>>) {
        for (const auto& plane : value.plane)
            if (!plane.alloc)
                return false;
    } else
        static_cast<void>(value);
    return true;
}

template <class T>
void ThreadedBuffer<T>::append(T& value) {
    if (isSelfContained(value))
        queue.push_back(std::move(value));
    else
        queue.push_back(value);
}

/// Boost's wait throws on every wake-up of an interrupted thread, also when a value came at the same moment, which
/// would never be fetched. So the request goes back to the thread then, whose next interruption point meets it.
template <class T>
void ThreadedBuffer<T>::waitForValue(Lock& lock) {
#ifdef BOOST_THREAD_PROVIDES_INTERRUPTIONS
    try {
        condition.wait(lock);
    } catch (const boost::thread_interrupted&) {
        if (queue.empty())
            throw;
        // What boost::thread::interrupt() does, for a thread whose handle is elsewhere.
        boost::detail::thread_data_base* const self = boost::detail::get_current_thread_data();
        const boost::lock_guard<boost::mutex> selfLock(self->data_mutex);
        self->interrupt_requested = true;
    }
#else
    condition.wait(lock);
#endif
}

/// @}

} // namespace Ko

#endif
