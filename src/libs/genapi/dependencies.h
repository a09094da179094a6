// The last step of loading: who depends on whom, who selects whom, what is a feature.
#pragma once

#include "genapi/loadcontext.h"

namespace GenApi::Detail {

// Needs all nodes built, and their reading links gathered.
void linkDependants(LoadContext& context);

}  // namespace GenApi::Detail
