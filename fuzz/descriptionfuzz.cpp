// Any bytes as a description: loads it, reads everything of every node and writes it back, on a
// port of noise. What is behind a form feed, which no description may have, is injected.
#include <algorithm>
#include <cstddef>
#include <string>

#include "noiseport.h"

namespace {

using namespace GenApi;
using OrlixFuzz::attempt;

void useNumbers(INode* node) {
    if (const CIntegerPtr integer(node); integer.IsValid()) {
        attempt([&] { integer->SetValue(integer->GetValue()); });
        attempt([&] { integer->SetValue(integer->GetMax()); });
        attempt([&] { (void)integer->GetMin(); });
        attempt([&] { (void)integer->GetInc(); });
        attempt([&] { (void)integer->GetListOfValidValues(); });
        attempt([&] { integer->SetValue(INT64_MIN, false); });
        attempt([&] { (void)integer->GetUnit(); });
    }
    if (const CFloatPtr real(node); real.IsValid()) {
        attempt([&] { real->SetValue(real->GetValue()); });
        attempt([&] { real->SetValue(real->GetMax()); });
        attempt([&] { (void)real->GetMin(); });
        attempt([&] { (void)real->GetInc(); });
        attempt([&] { (void)real->GetListOfValidValues(); });
        attempt([&] { real->SetValue(1e300, false); });
        attempt([&] { (void)real->GetDisplayPrecision(); });
    }
}

void useOthers(INode* node) {
    if (const CEnumerationPtr enumeration(node); enumeration.IsValid()) {
        NodeList_t entries;
        attempt([&] { enumeration->GetEntries(entries); });
        attempt([&] { (void)enumeration->GetCurrentEntry(); });
        attempt([&] { enumeration->SetIntValue(enumeration->GetIntValue()); });
    }
    if (const CCommandPtr command(node); command.IsValid()) {
        attempt([&] { command->Execute(); });
        attempt([&] { (void)command->IsDone(); });
    }
    if (const CRegisterPtr reg(node); reg.IsValid()) {
        attempt([&] { (void)reg->GetAddress(); });
        attempt([&] { (void)reg->GetLength(); });
    }
    if (const CCategoryPtr category(node); category.IsValid()) {
        FeatureList_t features;
        attempt([&] { category->GetFeatures(features); });
    }
}

void useNode(INode* node) {
    attempt([&] { (void)node->GetAccessMode(); });
    (void)node->GetDisplayName();
    (void)node->GetCachingMode();
    NodeList_t links;
    node->GetChildren(links, ctAllDependingNodes);
    node->GetChildren(links, ctReadingChildren);
    node->GetChildren(links, ctWritingChildren);
    StringList_t properties;
    node->GetPropertyNames(properties);
    gcstring text;
    gcstring attribute;
    for (const gcstring& property : properties) {
        (void)node->GetProperty(property, text, attribute);
    }
    if (const CValuePtr value(node); value.IsValid()) {
        attempt([&] { (void)value->IsValueCacheValid(); });
        attempt([&] { (void)value->ToString(false, true); });
        attempt([&] { value->FromString(value->ToString()); });
        attempt([&] { value->FromString("1"); });
    }
    useNumbers(node);
    useOthers(node);
    attempt([&] { node->InvalidateNode(); });
}

void useMap(const CNodeMapRef& map) {
    OrlixFuzz::NoisePort port(1);
    NodeList_t nodes;
    map->GetNodes(nodes);
    for (INode* node : nodes) {
        if (node->GetPrincipalInterfaceType() == intfIPort) {
            map->Connect(&port, node->GetName());
        }
    }
    // Enough for any finding; a text of thousands of nodes would only take time.
    constexpr std::size_t most = 200;
    nodes.resize(std::min(nodes.size(), most));
    for (INode* node : nodes) {
        useNode(node);
    }
    attempt([&] { map->Poll(1000); });
    for (INode* node : nodes) {
        if (node->GetPrincipalInterfaceType() == intfIPort) {
            map->Connect(nullptr, node->GetName());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    attempt([&] {
        const std::uint8_t* const end = data + size;
        const std::uint8_t* const split = std::find(data, end, std::uint8_t{'\f'});
        CNodeMapFactory factory(ContentType_Xml, data, static_cast<std::size_t>(split - data));
        if (split != end) {
            factory.InjectDescription(ContentType_Xml, split + 1,
                                      static_cast<std::size_t>(end - split - 1));
        }
        const CNodeMapRef map = factory.CreateNodeMap();
        useMap(map);
    });
    return 0;
}
