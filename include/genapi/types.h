// Enumerations and small value types of the GenApi interfaces, under the names that users of the
// standard know. Pure data: no ownership, no threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "gcbase/gcstring.h"

namespace GenApi {

using GenICam::gcstring;

class INode;
class IValue;
using NodeList_t = std::vector<INode*>;
using FeatureList_t = std::vector<IValue*>;
using StringList_t = std::vector<gcstring>;
using int64_autovector_t = std::vector<std::int64_t>;
using double_autovector_t = std::vector<double>;

// What may be done with a node now. The order has a meaning: everything below WO is out of reach.
enum EAccessMode {
    NI = 0,  // the device does not have it, now or ever
    NA = 1,  // the device has it, but not in its present state
    WO = 2,
    RO = 3,
    RW = 4,
    _UndefinedAccesMode = 5,
    _CycleDetectAccesMode = 6
};

// Who should see a node. A node without the element is for beginners.
enum EVisibility { Beginner = 0, Expert = 1, Guru = 2, Invisible = 3, _UndefinedVisibility = 99 };

// How a number should be shown; it also decides the text form of integers.
enum ERepresentation {
    Linear = 0,
    Logarithmic = 1,
    Boolean = 2,
    PureNumber = 3,
    HexNumber = 4,
    IPV4Address = 5,
    MACAddress = 6,
    _UndefinedRepresentation = 7
};

// What a register keeps of the bytes that went through it.
enum ECachingMode { NoCache = 0, WriteThrough = 1, WriteAround = 2, _UndefinedCachingMode = 3 };

// The interface that a user deals with first; INode::GetPrincipalInterfaceType.
enum EInterfaceType {
    intfIValue = 0,
    intfIBase = 1,
    intfIInteger = 2,
    intfIBoolean = 3,
    intfICommand = 4,
    intfIFloat = 5,
    intfIString = 6,
    intfIRegister = 7,
    intfICategory = 8,
    intfIEnumeration = 9,
    intfIEnumEntry = 10,
    intfIPort = 11
};

// When a callback runs, seen from the map's lock.
enum ECallbackType { cbPostInsideLock = 1, cbPostOutsideLock = 2 };

enum EYesNo { No = 0, Yes = 1, _UndefinedYesNo = 2 };
enum ENameSpace { Custom = 0, Standard = 1, _UndefinedNameSpace = 2 };
enum ESign { Signed = 0, Unsigned = 1, _UndefinedSign = 2 };
enum EEndianess { BigEndian = 0, LittleEndian = 1, _UndefinedEndian = 2 };
enum EDisplayNotation {
    fnAutomatic = 0,
    fnFixed = 1,
    fnScientific = 2,
    _UndefinedEDisplayNotation = 3
};
enum EIncMode { noIncrement = 0, fixedIncrement = 1, listIncrement = 2 };

// As the root of a description states it; 0 where it does not.
struct Version_t {
    std::uint16_t Major = 0;
    std::uint16_t Minor = 0;
    std::uint16_t SubMinor = 0;
    bool operator==(const Version_t&) const = default;
};

// Which links INode::GetChildren follows.
enum ELinkType {
    ctAllDependingNodes = 0,    // nodes that an invalidation of this one reaches, transitively
    ctReadingChildren = 1,      // nodes that this one reads
    ctWritingChildren = 2,      // nodes that a write to this one writes
    ctInvalidatingChildren = 3  // nodes whose invalidation invalidates this one directly
};

// What the bytes given to CNodeMapFactory are.
enum EContentType_t { ContentType_Xml = 0, ContentType_ZippedXml = 1 };

// Kept for source compatibility: descriptions are shared by the factory, never stored on disk.
enum ECacheUsage_t {
    CacheUsage_Automatic = 0,
    CacheUsage_ForceWrite = 1,
    CacheUsage_ForceRead = 2,
    CacheUsage_Ignore = 3
};

}  // namespace GenApi
