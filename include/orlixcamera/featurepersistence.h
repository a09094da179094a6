// The state of a node map as a text, to be kept and to be written to another device of the kind.
//
//     # {05D8C294-F295-4dfb-9D01-096BD04049F4}
//     # model of the device
//     Width<TAB>640
//     GainSelector<TAB>DigitalAll
//     Gain<TAB>1.5
//
// A line is a comment, which has a # anywhere, or a name, one tab and a value. In values, "\\"
// stands for a backslash, "\xHH" for the byte of that code, and "\e" for nothing, along with a tab
// right behind it. So no value has a line feed, a tab, #, = or a blank at an end in its line, an
// empty value can be seen, and each line has a letter before a tab, whatever the name ends with.
#pragma once

#include "gcbase/gcstring.h"
#include "orlixcamera/api.h"

namespace GenApi {
class INodeMap;
}

namespace Orlix {

// Both hold the map's lock for the whole operation. A null map is an InvalidArgumentException; a
// port's own exception passes unchanged.
class ORLIXCAMERA_API CFeaturePersistence {
public:
    CFeaturePersistence() = delete;

    // Replaces `text`. Takes in all features that are marked as streamable and can be read and
    // written now, floats exactly and without a locale; those that selectors select once for each
    // combination of the selectors' values. A float that is infinite or no number is left out, for
    // it could not be written. The selectors end as they were, on an exception too.
    static void SaveToString(GenICam::gcstring& text, GenApi::INodeMap* nodeMap);

    // Applies the lines in their order, and those that failed again as long as that helps, since
    // the range of one value may depend on another. A value behind a selector that could not be
    // set is not written. All that can be loaded is loaded; then one RuntimeException names every
    // line that could not be: unknown name, refused value and, with `validate`, every value,
    // selectors too, that reads back another than was written. A text with a line that is none is
    // refused as a whole, by a RuntimeException with the number of the first.
    static void LoadFromString(const GenICam::gcstring& text, GenApi::INodeMap* nodeMap,
                               bool validate = true);
};

}  // namespace Orlix
