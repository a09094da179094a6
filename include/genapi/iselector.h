// ISelector, the relation between a selector and what it selects. Constants of the description;
// any thread may call.
#pragma once

#include "genapi/ibase.h"

namespace GenApi {

class GENAPI_API ISelector : virtual public IBase {
public:
    [[nodiscard]] virtual bool IsSelector() const = 0;
    // Both replace the list, in the description's order.
    virtual void GetSelectedFeatures(FeatureList_t& Features) const = 0;
    virtual void GetSelectingFeatures(FeatureList_t& Features) const = 0;
};

}  // namespace GenApi
