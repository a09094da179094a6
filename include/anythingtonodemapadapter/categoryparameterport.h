// Categories: the branches of a node's parameter tree. They hold no value and no register.
#pragma once

#include "anythingtonodemapadapter/parameterport.h"

namespace AnythingToNodeMapAdapter {

// A category with nothing but a name, such as "Root".
class ANYTHINGTONODEMAPADAPTER_API CategoryParameterPort
    : public BasicParameterPort<ICategoryParameterPort> {
public:
    explicit CategoryParameterPort(const gcstring& name) : BasicParameterPort({name, "", "", ""}) {}

    [[nodiscard]] std::uint64_t getSize() const override { return 0; }
};

// A category that a user meets by its own display name and texts.
class ANYTHINGTONODEMAPADAPTER_API DescribedCategoryParameterPort
    : public BasicParameterPort<ICategoryParameterPort> {
public:
    DescribedCategoryParameterPort(const gcstring& name, const gcstring& displayName,
                                   const gcstring& toolTip, const gcstring& description)
        : BasicParameterPort({name, displayName, toolTip, description}) {}

    [[nodiscard]] std::uint64_t getSize() const override { return 0; }
};

}  // namespace AnythingToNodeMapAdapter
