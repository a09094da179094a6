#include "anythingtonodemapadapter/categorynodemapport.h"

#include <ostream>

#include "anythingtonodemapadapter/descriptiontext.h"

namespace AnythingToNodeMapAdapter::Detail {

void CCategoryNodeMapPort::Read(void* /*buffer*/, std::int64_t /*address*/,
                                std::int64_t /*length*/) {}

void CCategoryNodeMapPort::Write(const void* /*buffer*/, std::int64_t /*address*/,
                                 std::int64_t /*length*/) {}

void CCategoryNodeMapPort::generateNode(std::ostream& out, bool /*ownPort*/,
                                        const gcstring& /*portName*/, const gcstring& /*prefix*/,
                                        std::int64_t& /*address*/) {
    if (!port()) {
        return;
    }
    out << "    <Category Name=\"" << getName() << "\">\n";
    writeTexts(out, Indent::Element, *port());
    writeElements(out, Indent::Element, "pFeature", dependencies("Feature"));
    out << "    </Category>\n";
}

}  // namespace AnythingToNodeMapAdapter::Detail
