#include "Kovanta/ThreadedBuffer.h"

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

    static int copiesLeft;
};
int CopyOnly::copiesLeft = 0;

template <class T>
void putAll(ThreadedBuffer<T>& buffer, int first, int last) {
    for (int i = first; i <= last; ++i)
        buffer.put(T(i));
}

template <class T>
std::vector<int> getAll(ThreadedBuffer<T>& buffer, int n) {
    std::vector<int> values;
    for (int i = 0; i < n; ++i)
        values.push_back(buffer.get().value);
    return values;
}

/// Takes until it is interrupted.
template <class T>
void consume(ThreadedBuffer<T>& buffer, std::vector<int>& taken) {
    try {
        for (;;)
            taken.push_back(buffer.get().value);
    } catch (const boost::thread_interrupted&) {
    }
}

TEST(ThreadedBuffer, FullMeansExactlyTheCapacity) {
    ThreadedBuffer<CopyOnly> buffer;
    buffer.setCapacity(5);
    buffer.setDropOldest(true);
    putAll(buffer, 1, 6);
    EXPECT_EQ(getAll(buffer, 5), (std::vector<int>{2, 3, 4, 5, 6}));

    putAll(buffer, 1, 4);
    buffer.setCapacity(2); // neither trims the queue nor makes it full
    putAll(buffer, 5, 6);
    buffer.setDropOldest(false);
    putAll(buffer, 7, 7);
    EXPECT_EQ(getAll(buffer, 7), (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));

    buffer.setCapacity(0);
    buffer.setDropOldest(true); // an empty queue has nothing to drop
    putAll(buffer, 1, 2);
    EXPECT_EQ(getAll(buffer, 2), (std::vector<int>{1, 2}));
}

TEST(ThreadedBuffer, HoldsAHundredAndMakesTheProducerWait) {
    ThreadedBuffer<CopyOnly> buffer;
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

TEST(ThreadedBuffer, AnInterruptedConsumerGetsWhatIsQueuedFirst) {
    ThreadedBuffer<CopyOnly> buffer;
    putAll(buffer, 1, 3);
    std::vector<int> taken;
    boost::thread consumer([&] {
        boost::this_thread::disable_interruption notYet;
        while (!boost::this_thread::interruption_requested())
            boost::this_thread::yield();
        boost::this_thread::restore_interruption now(notYet);
        consume(buffer, taken);
    });
    consumer.interrupt();
    consumer.join();
    EXPECT_EQ(taken, (std::vector<int>{1, 2, 3}));
}

TEST(ThreadedBuffer, AValueThatMeetsTheInterruptionIsDeliveredFirst) {
    for (int round = 0; round < 300; ++round) {
        ThreadedBuffer<CopyOnly> buffer;
        std::vector<int> taken;
        boost::thread consumer([&] { consume(buffer, taken); });
        for (int i = 0; i < round % 4; ++i)
            boost::this_thread::yield();
        putAll(buffer, 1, 2);
        consumer.interrupt();
        putAll(buffer, 3, 3); // the consumer may be gone by now
        consumer.join();
        ASSERT_GE(taken.size(), 2u) << "in round " << round;
        if (taken.size() < 3)
            taken.push_back(buffer.get().value); // by a thread that is owed no interruption
        EXPECT_EQ(taken, (std::vector<int>{1, 2, 3}));
    }
}

TEST(ThreadedBuffer, AnInterruptionIsOwedToOneThreadOnly) {
    for (int round = 0; round < 200; ++round) {
        ThreadedBuffer<CopyOnly> buffer;
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
    ThreadedBuffer<CopyOnly> buffer;
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
    EXPECT_EQ(getAll(buffer, 2), (std::vector<int>{1, 2}));
    buffer.setDropOldest(true);
    putAll(buffer, 4, 5);
    EXPECT_EQ(getAll(buffer, 2), (std::vector<int>{4, 5}));
}

TEST(ThreadedBuffer, AFailedCopyLeavesTheQueueAsItWas) {
    ThreadedBuffer<CopyOnly> buffer;
    buffer.setCapacity(2);
    buffer.setDropOldest(true);
    putAll(buffer, 1, 2);
    CopyOnly fragile(3);
    fragile.fragile = true;
    CopyOnly::copiesLeft = 1; // the caller's copy succeeds, the queue's does not
    EXPECT_THROW(buffer.put(fragile), std::runtime_error);
    EXPECT_EQ(getAll(buffer, 2), (std::vector<int>{1, 2}));

    CopyOnly::copiesLeft = 2;
    buffer.put(fragile);
    EXPECT_THROW(buffer.get(), std::runtime_error);
    CopyOnly::copiesLeft = 1;
    EXPECT_EQ(buffer.get().value, 3);
}

TEST(ThreadedBuffer, KeepsImagesOfItsOwnAndCopiesNoMoreThanThat) {
    using Image = Ko::Image<unsigned char>;
    ThreadedBuffer<Image> buffer;
    Image owning(Ko::PF_YCC420P);
    owning.size(4, 2);
    for (int p = 0; p < 3; ++p)
        for (unsigned int i = 0; i < owning.plane[p].width * owning.plane[p].height; ++i)
            owning.plane[p].data[i] = static_cast<unsigned char>(10 * p + 1);
    std::vector<unsigned char> foreign(4 * 2, 77);
    Image wrapping(Ko::PF_YCC420P);
    wrapping.size(4, 2, false);
    for (int p = 0; p < 3; ++p)
        for (unsigned int y = 0; y < wrapping.plane[p].height; ++y)
            wrapping.plane[p].rows[y] = &foreign[4 * y];

    buffer.put(owning);
    const unsigned char* const memory = owning.plane[0].data;
    buffer.put(std::move(owning));
    buffer.put(wrapping);
    buffer.put(std::move(wrapping));
    foreign.assign(foreign.size(), 0);

    const Image copied = buffer.get();
    EXPECT_NE(copied.plane[0].data, memory);
    EXPECT_EQ(copied.plane[2].view[0][1], 21);
    const Image moved = buffer.get();
    EXPECT_EQ(moved.plane[0].data, memory);
    for (int i = 0; i < 2; ++i) {
        const Image kept = buffer.get();
        EXPECT_TRUE(kept.plane[0].alloc);
        EXPECT_EQ(kept.plane[0].view[1][3], 77);
        EXPECT_EQ(kept.plane[2].view[0][1], 77);
    }
}

} // namespace
