#include "draw/FreeTypeWatch.h"

#include <ft2build.h>
#include FT_MODULE_H

#include <cstdlib>

namespace {

long blocksHeld = 0;
long librariesHeld = 0;
long countdown = 0;

bool refuseThis() {
    return countdown > 0 && --countdown == 0;
}

void* take(FT_Memory, long size) {
    if (refuseThis())
        return nullptr;
    ++blocksHeld;
    return std::malloc(static_cast<std::size_t>(size));
}

void* resize(FT_Memory, long, long size, void* block) {
    return refuseThis() ? nullptr : std::realloc(block, static_cast<std::size_t>(size));
}

void give(FT_Memory, void* block) {
    --blocksHeld;
    std::free(block);
}

FT_MemoryRec_ memory{nullptr, take, give, resize};

} // namespace

extern "C" FT_Error FT_Init_FreeType(FT_Library* library) {
    const FT_Error error = FT_New_Library(&memory, library);
    if (error != 0)
        return error;
    ++librariesHeld;
    FT_Add_Default_Modules(*library);
    FT_Set_Default_Properties(*library);
    return 0;
}

extern "C" FT_Error FT_Done_FreeType(FT_Library library) {
    --librariesHeld;
    return FT_Done_Library(library);
}

FreeTypeWatch::FreeTypeWatch()
    : blocksBefore(blocksHeld)
    , librariesBefore(librariesHeld) {}

FreeTypeWatch::~FreeTypeWatch() {
    countdown = 0;
}

void FreeTypeWatch::refuse(long n) {
    countdown = n;
}

bool FreeTypeWatch::refused() const {
    return countdown == 0;
}

long FreeTypeWatch::blocks() const {
    return blocksHeld - blocksBefore;
}

long FreeTypeWatch::libraries() const {
    return librariesHeld - librariesBefore;
}
