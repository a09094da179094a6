#include "imageformatconverter/words.h"

#include <algorithm>
#include <iterator>

#include "gcbase/gcexception.h"
#include "orlixcamera/imageformatconverter.h"

namespace Plugin::OrlixVCellPackageBase {

using GenICam::gcstring;

namespace {

struct Word {
    std::int64_t value;
    const char* text;
};

constexpr Word orientations[] = {
    {Orlix::OutputOrientation_BottomUp, "BottomUp"},
    {Orlix::OutputOrientation_TopDown, "TopDown"},
    {Orlix::OutputOrientation_Unchanged, "Unchanged"},
};

constexpr Word bitAlignments[] = {
    {Orlix::OutputBitAlignment_LsbAligned, "LsbAligned"},
    {Orlix::OutputBitAlignment_MsbAligned, "MsbAligned"},
};

template <std::size_t size, typename Matches>
const Word& find(const Word (&words)[size], const char* failure, const Matches& matches) {
    const Word* word = std::find_if(std::begin(words), std::end(words), matches);
    if (word == std::end(words)) {
        throw GenICam::InvalidArgumentException(failure, __FILE__, __LINE__);
    }
    return *word;
}

template <std::size_t size>
const char* toText(const Word (&words)[size], std::int64_t value, const char* failure) {
    return find(words, failure, [&](const Word& word) { return word.value == value; }).text;
}

template <std::size_t size>
std::int64_t toValue(const Word (&words)[size], const gcstring& text, const char* failure) {
    return find(words, failure, [&](const Word& word) { return text == word.text; }).value;
}

}  // namespace

const char* toOrientationWord(std::int64_t value) {
    return toText(orientations, value, "Unknown output orientation value found.");
}

std::int64_t toOrientation(const gcstring& word) {
    return toValue(orientations, word, "Unknown symbolic name of output orientation found.");
}

const char* toBitAlignmentWord(std::int64_t value) {
    return toText(bitAlignments, value, "Unknown output bit alignment value found.");
}

std::int64_t toBitAlignment(const gcstring& word) {
    return toValue(bitAlignments, word, "Unknown symbolic name of output bit alignment found.");
}

}  // namespace Plugin::OrlixVCellPackageBase
