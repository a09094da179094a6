#include "genapi/pointer.h"

#include "gcbase/gcexception.h"

namespace GenApi::Detail {

void ThrowNullPointer() {
    throw GenICam::LogicalErrorException("NULL pointer dereferenced", __FILE__, __LINE__);
}

CallbackHandleType RegisterCallback(INode* node, CNodeCallback* callback) {
    if (node == nullptr) {
        delete callback;
        ThrowNullPointer();
    }
    return node->RegisterCallback(callback);
}

}  // namespace GenApi::Detail
