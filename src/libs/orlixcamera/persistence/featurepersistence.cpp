#include "orlixcamera/featurepersistence.h"

#include "gcbase/gcexception.h"
#include "genapi/inodemap.h"
#include "orlixcamera/persistence/featurereader.h"
#include "orlixcamera/persistence/featurewriter.h"

namespace Orlix {

namespace {

void checkMap(const GenApi::INodeMap* nodeMap) {
    if (nodeMap == nullptr) {
        throw GenICam::InvalidArgumentException("No node map passed.", __FILE__, __LINE__);
    }
}

}  // namespace

void CFeaturePersistence::SaveToString(GenICam::gcstring& text, GenApi::INodeMap* nodeMap) {
    checkMap(nodeMap);
    text = GenICam::gcstring(writeFeatureStream(*nodeMap));
}

void CFeaturePersistence::LoadFromString(const GenICam::gcstring& text, GenApi::INodeMap* nodeMap,
                                         bool validate) {
    checkMap(nodeMap);
    readFeatureStream(text.view(), *nodeMap, validate ? ReadBack::Yes : ReadBack::No);
}

}  // namespace Orlix
