#include "anythingtonodemapadapter/enumparameterport.h"

#include "gcbase/gcexception.h"

namespace AnythingToNodeMapAdapter {

void throwNotOf32Bits(const gcstring& parameter, const gcstring& value) {
    const gcstring text = "The value " + value + " of parameter " + parameter +
                          " is out of range: it must be a number of 32 bits.";
    throw GenICam::OutOfRangeException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace AnythingToNodeMapAdapter
