#include "camera/pinparsing.h"

#include <array>

#include "camera/log.h"
#include "camera/pinmappingparser.h"
#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/array.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
using Orlix::DataProcessing::Utils::TypeInfo;
using namespace CameraLog;

ParseResult parsePins(PinMappingType type, const std::vector<GenICam::gcstring>& lines,
                      PinMappingMap& pins) {
    PinMappingParser parser;
    try {
        parser.parse(type, lines, pins);
        return ParseResult::Parsed;
    } catch (const GenICam::RuntimeException& exception) {
        createLogEntry(Severitiy::Error, category(), "Camera: (%d,%d): Error : %s",
                       static_cast<int>(parser.getLine()), static_cast<int>(parser.getColumn()),
                       exception.GetDescription());
        return ParseResult::Failed;
    }
}

TypeInfo getScalarType(PinType type) {
    const std::array types{TypeInfo(), TypeInfo::getTypeInfo<Core::Boolean>(true),
                           TypeInfo::getTypeInfo<Core::Float>(true),
                           TypeInfo::getTypeInfo<Core::Integer>(true),
                           TypeInfo::getTypeInfo<Core::String>(true)};
    return types.at(static_cast<std::size_t>(type));
}

TypeInfo getArrayType(PinType type) {
    const std::array types{TypeInfo(), TypeInfo::getTypeInfo<Core::Array<Core::Boolean>>(true),
                           TypeInfo::getTypeInfo<Core::Array<Core::Float>>(true),
                           TypeInfo::getTypeInfo<Core::Array<Core::Integer>>(true),
                           TypeInfo::getTypeInfo<Core::Array<Core::String>>(true)};
    return types.at(static_cast<std::size_t>(type));
}

}  // namespace Plugin::OrlixVCellPackageBase
