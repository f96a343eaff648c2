// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_REFUSEDMEMORY_H
#define KOVANTA_TESTS_SUPPORT_REFUSEDMEMORY_H

#include <gtest/gtest.h>

#include <cstddef>
#include <exception>
#include <string>

// The program's own malloc, and through it operator new, for every library in it. A test that wants it links
// refused_memory. Under a sanitizer, which needs malloc for itself, it is operator new only.
namespace test {

/// Which requests are refused: those to malloc, or those to operator new only, for libraries below that crash without
/// a small piece of memory.
enum class Requests { Malloc, New };

/// While it lives, the n-th next request of its thread for memory, counted from 0, is refused.
class RefusedMemory {
public:
    explicit RefusedMemory(long n, Requests requests = Requests::Malloc);
    ~RefusedMemory();
    RefusedMemory(const RefusedMemory&) = delete;
    RefusedMemory& operator=(const RefusedMemory&) = delete;

    /// Whether there were that many requests.
    bool happened() const;
};

/// Blocks of memory that this thread holds: those it was given less those it gave back. 0 under a sanitizer.
long heldBlocks();

/// Runs an operation as often as it asks for memory, each time refusing another request. Each refusal has to end in an
/// exception (or to do without), with the state described as before, nothing kept, and the operation working
/// afterwards. What was kept is not counted with operator new alone, where other threads may give memory back.
/// @param make makes the state anew, @param run the operation, @param describe all of the state that could suffer
template <class Make, class Run, class Describe>
void refuseEveryRequest(Make make, Run run, Describe describe, Requests requests = Requests::Malloc) {
    {
        auto state = make();
        run(state); // what is made once and kept is made now
    }
    for (long n = 0;; ++n) {
        const long blocks = heldBlocks();
        bool happened = false;
        bool threw = false;
        {
            auto state = make();
            const std::string before = describe(state);
            {
                const RefusedMemory refused(n, requests);
                try {
                    run(state);
                } catch (const std::exception&) {
                    threw = true;
                }
                happened = refused.happened();
            }
            EXPECT_FALSE(threw && !happened) << "threw without a refusal";
            if (threw) {
                EXPECT_EQ(describe(state), before) << "after refused request " << n;
                EXPECT_NO_THROW(run(state)) << "after refused request " << n;
            }
        }
        EXPECT_TRUE(requests == Requests::New || heldBlocks() == blocks) << "leaked after refused request " << n;
        if (!happened || testing::Test::HasFailure())
            return;
    }
}

} // namespace test

#endif
