// ICategory, an inner node of the feature tree. A walk from the category "Root" through
// GetFeatures lists the tree without touching a port.
#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

// Its text is its display name. It is read-only also when empty.
class GENAPI_API ICategory : virtual public IValue {
public:
    // Replaces the list by the members in the description's order; links to nothing are left out
    // and stand in the load report. A member may be a category, and a hostile description may have
    // a category contain itself.
    virtual void GetFeatures(FeatureList_t& Features) const = 0;
};

}  // namespace GenApi
