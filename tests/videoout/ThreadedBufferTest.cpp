// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ThreadedBuffer.h"
#include "Kovanta/Wrap.h"
#include "support/TestImages.h"
#include "support/VideoMedia.h"

#include <boost/thread/thread.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using Ko::ThreadedBuffer;

/// All that the queue may ask of its values; throws on demand.
struct CopyOnly {
    int value;
    bool fragile = false;

    explicit CopyOnly(int v)
        : value(v) {}
    CopyOnly(const CopyOnly& other)
        : value(other.value)
        , fragile(other.fragile) {
        if (fragile && --copiesLeft < 0)
            throw std::runtime_error("no copy");
    }
    CopyOnly& operator=(const CopyOnly&) = delete;

    inline static int copiesLeft = 0;
};
using Buffer = ThreadedBuffer<CopyOnly>;

void putAll(Buffer& buffer, int first, int last) {
    for (int i = first; i <= last; ++i)
        buffer.put(CopyOnly(i));
}

std::vector<int> getAll(Buffer& buffer, int n) {
    std::vector<int> values;
    for (int i = 0; i < n; ++i)
        values.push_back(buffer.get().value);
    return values;
}

TEST(ThreadedBuffer, FullMeansExactlyTheCapacity) {
    Buffer buffer;
    buffer.setCapacity(5);
    buffer.setDropOldest(true);
    putAll(buffer, 1, 6);
    EXPECT_EQ(getAll(buffer, 5), test::indices(5, 2));

    putAll(buffer, 1, 4);
    buffer.setCapacity(2); // neither trims the queue nor makes it full
    putAll(buffer, 5, 6);
    buffer.setDropOldest(false);
    putAll(buffer, 7, 7);
    EXPECT_EQ(getAll(buffer, 7), test::indices(7, 1));

    buffer.setCapacity(0);
    buffer.setDropOldest(true); // an empty queue has nothing to drop
    putAll(buffer, 1, 2);
    EXPECT_EQ(getAll(buffer, 2), test::indices(2, 1));
}

TEST(ThreadedBuffer, HoldsAHundredAndMakesTheProducerWait) {
    Buffer buffer;
    std::atomic<int> queued{0};
    boost::thread producer([&] {
        for (int i = 1; i <= 103; ++i) {
            buffer.put(CopyOnly(i));
            ++queued;
        }
    });
    for (int taken = 0; taken < 103; ++taken) {
        while (queued < std::min(100 + taken, 103))
            boost::this_thread::yield();
        if (taken < 3) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5)); // time for one too many, if it could
            EXPECT_EQ(queued, 100 + taken);
        }
        EXPECT_EQ(buffer.get().value, taken + 1);
    }
    producer.join();
}

TEST(ThreadedBuffer, SeveralProducersAndConsumersShareASmallQueue) {
    constexpr int producers = 3, consumers = 4, each = 4000; // each producer puts, all consumers take as many
    for (const unsigned int capacity : {1u, 2u}) {
        Buffer buffer;
        buffer.setCapacity(capacity);
        std::vector<std::vector<int>> taken(consumers);
        std::vector<boost::thread> threads;
        for (int p = 0; p < producers; ++p)
            threads.emplace_back([&, p] { putAll(buffer, p * each, p * each + each - 1); });
        for (auto& values : taken)
            threads.emplace_back([&] { values = getAll(buffer, producers * each / consumers); });
        bool ended = true;
        for (auto& thread : threads) {
            ended = ended && thread.timed_join(boost::posix_time::milliseconds(60000));
            if (!ended)
                thread.interrupt();
        }
        for (auto& thread : threads)
            if (thread.joinable())
                thread.join();
        ASSERT_TRUE(ended) << "with capacity " << capacity;
        std::vector<int> all;
        for (const auto& values : taken)
            all.insert(all.end(), values.begin(), values.end());
        std::sort(all.begin(), all.end());
        EXPECT_EQ(all, test::indices(producers * each, 0));
    }
}

TEST(ThreadedBuffer, AnInterruptedConsumerGetsWhatIsQueuedFirst) {
    for (int round = 0; round < 300; ++round) {
        Buffer buffer;
        std::vector<int> taken;
        boost::thread consumer([&] {
            while (round % 10 == 0 && !boost::this_thread::interruption_requested())
                boost::this_thread::yield(); // in the other rounds a value may meet the interruption
            try {
                for (;;)
                    taken.push_back(buffer.get().value);
            } catch (const boost::thread_interrupted&) {
            }
        });
        for (int i = 0; i < round % 4; ++i)
            boost::this_thread::yield();
        putAll(buffer, 1, 2);
        consumer.interrupt();
        putAll(buffer, 3, 3); // the consumer may be gone by now
        consumer.join();
        ASSERT_GE(taken.size(), 2u) << "in round " << round;
        if (taken.size() < 3)
            taken.push_back(buffer.get().value); // by a thread that is owed no interruption
        EXPECT_EQ(taken, test::indices(3, 1));
    }
}

TEST(ThreadedBuffer, AnInterruptionThatMeetsAValueEndsTheNextWaitWhereverThatIs) {
    for (int round = 0; round < 200; ++round) {
        Buffer in;
        Buffer out;
        out.setCapacity(1);
        putAll(out, 0, 0); // full: the stage has to wait with the value it was given
        boost::thread stage([&] {
            try {
                for (;;)
                    out.put(in.get());
            } catch (const boost::thread_interrupted&) {
            }
        });
        for (int i = 0; i < round % 4; ++i)
            boost::this_thread::yield();
        putAll(in, 1, 1);
        stage.interrupt();
        const bool ended = stage.timed_join(boost::posix_time::milliseconds(60000));
        EXPECT_TRUE(ended) << "in round " << round;
        if (!ended) {
            stage.interrupt();
            stage.join();
            return;
        }
    }
}

TEST(ThreadedBuffer, AnInterruptionIsOwedToOneThreadOnly) {
    for (int round = 0; round < 200; ++round) {
        Buffer buffer;
        boost::thread first([&] { buffer.get(); }); // leaves with its value, perhaps while it is owed an interruption
        boost::this_thread::yield();
        putAll(buffer, 1, 1);
        first.interrupt();
        first.join();
        int value = 0;
        boost::thread second([&] { value = buffer.get().value; });
        boost::this_thread::yield();
        putAll(buffer, 2, 2);
        second.join();
        ASSERT_EQ(value, 2) << "in round " << round;
    }
}

TEST(ThreadedBuffer, AnInterruptedProducerQueuesNothing) {
    Buffer buffer;
    buffer.setCapacity(2);
    putAll(buffer, 1, 2);
    bool interrupted = false;
    boost::thread producer([&] {
        try {
            buffer.put(CopyOnly(3));
        } catch (const boost::thread_interrupted&) {
            interrupted = true;
        }
    });
    producer.interrupt();
    producer.join();
    EXPECT_TRUE(interrupted);
    EXPECT_EQ(getAll(buffer, 2), test::indices(2, 1));
}

TEST(ThreadedBuffer, AFailedCopyLeavesTheQueueAsItWas) {
    Buffer buffer;
    buffer.setCapacity(2);
    buffer.setDropOldest(true);
    putAll(buffer, 1, 2);
    CopyOnly fragile(3);
    fragile.fragile = true;
    CopyOnly::copiesLeft = 1; // the caller's copy succeeds, the queue's does not
    EXPECT_THROW(buffer.put(fragile), std::runtime_error);
    EXPECT_EQ(getAll(buffer, 2), test::indices(2, 1));

    CopyOnly::copiesLeft = 2;
    buffer.put(fragile);
    EXPECT_THROW(buffer.get(), std::runtime_error);
    CopyOnly::copiesLeft = 1;
    EXPECT_EQ(buffer.get().value, 3);
}

TEST(ThreadedBuffer, KeepsImagesOfItsOwnAndCopiesNoMoreThanThat) {
    using Image = Ko::Image<unsigned char>;
    ThreadedBuffer<Image> buffer;
    Image owning = test::numberedFrame(5);
    const Image expected(owning);
    Image foreign(owning);
    Image wrapping = Ko::wrapRectangle(foreign, 0, 0, foreign.width, foreign.height);

    buffer.put(owning);
    const unsigned char* const memory = owning.plane[0].data;
    buffer.put(std::move(owning));
    buffer.put(wrapping);
    buffer.put(std::move(wrapping));
    test::fill(foreign, 0);

    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const Image kept = buffer.get();
        EXPECT_EQ(kept.plane[0].data == memory, i == 1) << "only what was moved in is the same memory";
        for (int p = 0; p < 3; ++p) {
            EXPECT_TRUE(kept.plane[p].alloc);
            EXPECT_EQ(test::samples(kept, p), test::samples(expected, p));
        }
    }
}

} // namespace
