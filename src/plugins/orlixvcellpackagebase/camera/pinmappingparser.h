// The parser of the language that maps chunks and events of a camera to output pins:
//
//     ExposureEnd.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEnd
//     Gain.Type=Float.SelectorName=GainSelector.SelectorValue=1.ValueName=ChunkGain
//
//     line     = { entry }
//     entry    = [ pin-name ] "." property-name "=" payload
//     payload  = one or more letters, digits and double quotes, right behind the "="
//
// Blanks may stand anywhere else. A payload ends at the first other character, and so may an
// entry; an entry without a name speaks of the pin before it, also across lines.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "camera/pinmapping.h"

namespace Plugin::OrlixVCellPackageBase {

// Lives for one call of parse, on one thread. After a failure getLine() and getColumn() tell where.
class PinMappingParser {
public:
    // Replaces `result` by the pins that the lines declare; a line ends at its first NUL. A pin
    // without a "Type" is left out. Throws RuntimeException for whatever is no such line, but
    // std::runtime_error for a value that is given twice; `result` is of no use then.
    void parse(PinMappingType mappingType, const std::vector<GenICam::gcstring>& lines,
               PinMappingMap& result);

    // Counted from 0.
    [[nodiscard]] std::uint64_t getLine() const noexcept { return line_; }
    // Always 0: positions within a line are not told.
    [[nodiscard]] std::uint64_t getColumn() const noexcept { return column_; }

private:
    class Cursor;

    struct Entry {
        std::string pinName;
        PinProperty property = PinProperty::Invalid;
        std::string payload;
    };

    // Types come first, so that they may stand behind the other properties of their pin.
    template <typename Handle>
    void forEachEntry(const std::vector<GenICam::gcstring>& lines, const Handle& handle);
    Entry readEntry(Cursor& cursor);
    std::string readPinName(Cursor& cursor);

    std::string currentPinName_;
    std::uint64_t column_ = 0;
    std::uint64_t line_ = 0;
};

}  // namespace Plugin::OrlixVCellPackageBase
