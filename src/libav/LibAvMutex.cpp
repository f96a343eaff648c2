#include "Kovanta/LibAvMutex.h"

boost::mutex libAvMutex;
