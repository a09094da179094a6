// Short hands for the engine's own errors. Each text names the node and what was wrong with it.
#pragma once

#include <string>

#include "gcbase/gcexception.h"

#define GENAPI_THROW(Class, text) \
    throw GenICam::Class(std::string(text).c_str(), __FILE__, __LINE__)
