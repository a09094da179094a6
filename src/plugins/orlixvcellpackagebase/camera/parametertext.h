// What the texts of a parameter of Camera are made of.
#pragma once

namespace Plugin::OrlixVCellPackageBase::CameraTexts {

struct CategoryText {
    const char* name;
    const char* displayName;
    const char* toolTip;
    const char* description;
};

// Whether a parameter can be seen and written at first. Both have a register, since both change.
struct FirstState {
    bool available;
    bool writable;
};

struct ParameterText {
    const char* name;
    const char* displayName;
    const char* visibility;
    FirstState first;
    const char* toolTip;
    const char* description;
};

struct EntryText {
    const char* name;
    const char* displayName;
    const char* toolTip;
    const char* description;
};

}  // namespace Plugin::OrlixVCellPackageBase::CameraTexts
