#include "draw/FreeTypeWatch.h"

#include <ft2build.h>
#include FT_MODULE_H

#include <cstdlib>

void (*FreeTypeWatch::onAllocation)() = nullptr;
long FreeTypeWatch::blocksHeld = 0;
long FreeTypeWatch::librariesHeld = 0;
long FreeTypeWatch::countdown = 0;

namespace {

void* resize(FT_Memory, long, long size, void* block) {
    if (FreeTypeWatch::onAllocation && FreeTypeWatch::librariesHeld > 0)
        FreeTypeWatch::onAllocation();
    if (FreeTypeWatch::countdown > 0 && --FreeTypeWatch::countdown == 0)
        return nullptr;
    return std::realloc(block, static_cast<std::size_t>(size));
}

void* take(FT_Memory memory, long size) {
    void* const block = resize(memory, 0, size, nullptr);
    FreeTypeWatch::blocksHeld += block != nullptr;
    return block;
}

void give(FT_Memory, void* block) {
    --FreeTypeWatch::blocksHeld;
    std::free(block);
}

FT_MemoryRec_ memory{nullptr, take, give, resize};

} // namespace

extern "C" FT_Error FT_Init_FreeType(FT_Library* library) {
    const FT_Error error = FT_New_Library(&memory, library);
    if (error != 0)
        return error;
    FT_Add_Default_Modules(*library);
    FT_Set_Default_Properties(*library);
    ++FreeTypeWatch::librariesHeld;
    return 0;
}

extern "C" FT_Error FT_Done_FreeType(FT_Library library) {
    --FreeTypeWatch::librariesHeld;
    return FT_Done_Library(library);
}
