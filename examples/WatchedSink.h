#ifndef KOVANTA_EXAMPLES_WATCHEDSINK_H
#define KOVANTA_EXAMPLES_WATCHEDSINK_H

#include <Kovanta/VideoOutput.h>

#include <boost/thread/thread.hpp>

#include <chrono>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <utility>

/// Runs a job that writes into a sink, on a thread of its own, and throws what it throws.
///
/// A sink that met an error takes nothing out of its queue any more, and write() would wait there for ever. So the sink
/// is watched meanwhile, and the waiting thread interrupted.
/// @throws std::runtime_error with the file's name and the sink's reason when it met an error
inline void runWatched(const Ko::VideoOutputVideoFile& sink, const std::string& file, std::function<void()> job) {
    std::packaged_task<void()> task(std::move(job));
    std::future<void> end = task.get_future();
    boost::thread worker(std::move(task));
    while (end.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready)
        if (!sink.getError().empty())
            worker.interrupt();
    worker.join();
    try {
        end.get();
    } catch (const boost::thread_interrupted&) {
    }
    if (!sink.getError().empty())
        throw std::runtime_error(file + ": " + sink.getError());
}

#endif
