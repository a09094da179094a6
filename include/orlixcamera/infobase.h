// A set of properties: keys and values, such as the identity of a device. A value type.
#pragma once

#include <map>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixcamera/api.h"

namespace Orlix {

using GenICam::gcstring;

class ORLIXCAMERA_API CInfoBase {
public:
    CInfoBase();
    CInfoBase(const CInfoBase&);
    CInfoBase& operator=(const CInfoBase&);
    virtual ~CInfoBase();

    // False, and value untouched, for a key that is not present.
    [[nodiscard]] bool GetPropertyValue(const gcstring& key, gcstring& value) const;
    CInfoBase& SetPropertyValue(const gcstring& key, const gcstring& value);
    // The keys in ascending order; returns their number.
    std::size_t GetPropertyNames(std::vector<gcstring>& names) const;
    // Whether all the given properties are present here with equal values.
    [[nodiscard]] bool IsSubset(const CInfoBase& properties) const;

    [[nodiscard]] bool IsDeviceClassAvailable() const;
    [[nodiscard]] gcstring GetDeviceClass() const;

protected:
    [[nodiscard]] const std::map<gcstring, gcstring>& properties() const noexcept {
        return properties_;
    }

private:
    std::map<gcstring, gcstring> properties_;
};

}  // namespace Orlix
