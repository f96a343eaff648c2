#include "Kovanta/VideoOutputBase.h"

namespace Ko {

VideoOutput::~VideoOutput() = default;

} // namespace Ko
