#ifndef KOVANTA_TESTS_DRAW_FREETYPEWATCH_H
#define KOVANTA_TESTS_DRAW_FREETYPEWATCH_H

/// Counts what FreeType holds while it lives, and can refuse it memory. The program's FT_Init_FreeType and
/// FT_Done_FreeType stand before FreeType's own, for the library under test as well. Not for several threads.
class FreeTypeWatch {
public:
    FreeTypeWatch() = default;
    FreeTypeWatch(const FreeTypeWatch&) = delete;
    FreeTypeWatch& operator=(const FreeTypeWatch&) = delete;
    ~FreeTypeWatch() {
        countdown = 0;
        onAllocation = nullptr;
    }

    /// Refuses the n-th allocation from now on (1 is the next), once.
    void refuse(long n) { countdown = n; }
    bool refused() const { return countdown == 0; }

    /// What is held now and was not when the watch began.
    long blocks() const { return blocksHeld - blocksBefore; }
    long libraries() const { return librariesHeld - librariesBefore; }

    static void (*onAllocation)();                    ///< Called before each allocation of a library that is there.
    static long blocksHeld, librariesHeld, countdown; ///< Of the whole program.

private:
    long blocksBefore = blocksHeld, librariesBefore = librariesHeld;
};

#endif
