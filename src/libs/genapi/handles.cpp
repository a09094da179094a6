// One layer for each interface, stacked to the handle of a kind. Each call from outside takes the
// map's lock once and hands on to the engine.
#include "genapi/handles.h"

#include <new>
#include <utility>

#include "genapi/engineerror.h"
#include "genapi/iboolean.h"
#include "genapi/icategory.h"
#include "genapi/icommand.h"
#include "genapi/ienumeration.h"
#include "genapi/ifloat.h"
#include "genapi/iinteger.h"
#include "genapi/iportconstruct.h"
#include "genapi/iregister.h"
#include "genapi/istring.h"
#include "genapi/nodehandle.h"
#include "genapi/registerlayer.h"

namespace GenApi::Detail {

namespace {

using Call = NodeMap::Call;

Verify verifyIf(bool verify) {
    return verify ? Verify::yes : Verify::no;
}

class ValueLayer : public NodeHandle, virtual public IValue {
public:
    using NodeHandle::NodeHandle;
    [[nodiscard]] INode* GetNode() override { return this; }
    [[nodiscard]] gcstring ToString(bool, bool IgnoreCache) override {
        const Call call(map());
        return gcstring(engine().toText(id(), useUnless(IgnoreCache)));
    }
    void FromString(const gcstring& ValueStr, bool Verify) override {
        const Call call(map());
        engine().fromText(id(), ValueStr.view(), verifyIf(Verify));
    }
    [[nodiscard]] bool IsValueCacheValid() const override {
        const Call call(map());
        return engine().isCached(id());
    }
};

// What integers and floats have in common.
template <class Interface, typename Number>
class NumberLayer : public ValueLayer, public Interface {
public:
    using ValueLayer::ValueLayer;
    [[nodiscard]] ERepresentation GetRepresentation() override {
        const Call call(map());
        return engine().representation(id());
    }
    [[nodiscard]] gcstring GetUnit() override {
        const Call call(map());
        return gcstring(engine().unit(id()));
    }
    void ImposeMin(Number Value) override {
        const Call call(map());
        engine().imposeMinimum(id(), Value);
    }
    void ImposeMax(Number Value) override {
        const Call call(map());
        engine().imposeMaximum(id(), Value);
    }
};

class IntegerLayer : public NumberLayer<IInteger, std::int64_t> {
public:
    using IInteger::operator=;
    using NumberLayer::NumberLayer;
    void SetValue(std::int64_t Value, bool Verify) override {
        const Call call(map());
        engine().setInteger(id(), Value, verifyIf(Verify));
    }
    [[nodiscard]] std::int64_t GetValue(bool, bool IgnoreCache) override {
        const Call call(map());
        engine().requireReadable(id());
        return engine().integer(id(), useUnless(IgnoreCache));
    }
    [[nodiscard]] std::int64_t GetMin() override {
        const Call call(map());
        return engine().minimum(id());
    }
    [[nodiscard]] std::int64_t GetMax() override {
        const Call call(map());
        return engine().maximum(id());
    }
    [[nodiscard]] std::int64_t GetInc() override {
        const Call call(map());
        return engine().increment(id());
    }
    [[nodiscard]] EIncMode GetIncMode() override {
        return GetListOfValidValues().empty() ? fixedIncrement : listIncrement;
    }
    [[nodiscard]] int64_autovector_t GetListOfValidValues() override {
        const Call call(map());
        return engine().validIntegers(id());
    }
};

class FloatLayer : public NumberLayer<IFloat, double> {
public:
    using IFloat::operator=;
    using NumberLayer::NumberLayer;
    void SetValue(double Value, bool Verify) override {
        const Call call(map());
        engine().setReal(id(), Value, verifyIf(Verify));
    }
    [[nodiscard]] double GetValue(bool, bool IgnoreCache) override {
        const Call call(map());
        engine().requireReadable(id());
        return engine().real(id(), useUnless(IgnoreCache));
    }
    [[nodiscard]] double GetMin() override {
        const Call call(map());
        return engine().realMinimum(id());
    }
    [[nodiscard]] double GetMax() override {
        const Call call(map());
        return engine().realMaximum(id());
    }
    [[nodiscard]] bool HasInc() override {
        const Call call(map());
        return engine().realIncrement(id()) != 0;
    }
    [[nodiscard]] EIncMode GetIncMode() override {
        if (!GetListOfValidValues().empty()) {
            return listIncrement;
        }
        return HasInc() ? fixedIncrement : noIncrement;
    }
    [[nodiscard]] double GetInc() override {
        const Call call(map());
        const double increment = engine().realIncrement(id());
        if (increment == 0) {
            GENAPI_THROW(LogicalErrorException, engine().says(id(), "has no increment."));
        }
        return increment;
    }
    [[nodiscard]] double_autovector_t GetListOfValidValues() override {
        const Call call(map());
        return engine().validReals(id());
    }
    [[nodiscard]] EDisplayNotation GetDisplayNotation() override {
        const Call call(map());
        return engine().notation(id());
    }
    [[nodiscard]] std::int64_t GetDisplayPrecision() override {
        const Call call(map());
        return engine().precision(id());
    }
};

class BooleanLayer : public ValueLayer, public IBoolean {
public:
    using IBoolean::operator=;
    using ValueLayer::ValueLayer;
    void SetValue(bool Value, bool Verify) override {
        const Call call(map());
        engine().setInteger(id(), Value ? 1 : 0, verifyIf(Verify));
    }
    [[nodiscard]] bool GetValue(bool, bool IgnoreCache) const override {
        const Call call(map());
        engine().requireReadable(id());
        return engine().truth(id(), useUnless(IgnoreCache));
    }
};

class EnumEntryLayer : public ValueLayer, public IEnumEntry {
public:
    using ValueLayer::ValueLayer;
    [[nodiscard]] std::int64_t GetValue() override { return entry().value; }
    [[nodiscard]] gcstring GetSymbolic() const override { return text(entry().symbolic); }
    [[nodiscard]] double GetNumericValue() override { return entry().numeric; }
    [[nodiscard]] bool IsSelfClearing() override { return entry().selfClearing; }

private:
    [[nodiscard]] const EntryDetail& entry() const { return description().entries[row().detail]; }
};

class EnumerationLayer : public ValueLayer, public IEnumeration {
public:
    using IEnumeration::operator=;
    using ValueLayer::ValueLayer;
    void GetEntries(NodeList_t& Entries) override {
        const Call call(map());
        Entries.clear();
        for (const NodeId entry : description().list(row().members)) {
            if (engine().report(entry) != NI) {
                Entries.push_back(map().nodeOf(entry));
            }
        }
    }
    void GetSymbolics(StringList_t& Symbolics) override {
        NodeList_t entries;
        GetEntries(entries);
        Symbolics.clear();
        for (INode* entry : entries) {
            Symbolics.push_back(dynamic_cast<IEnumEntry&>(*entry).GetSymbolic());
        }
    }
    void SetIntValue(std::int64_t Value, bool Verify) override {
        const Call call(map());
        engine().setInteger(id(), Value, verifyIf(Verify));
    }
    [[nodiscard]] std::int64_t GetIntValue(bool, bool IgnoreCache) override {
        const Call call(map());
        engine().requireReadable(id());
        return engine().integer(id(), useUnless(IgnoreCache));
    }
    [[nodiscard]] IEnumEntry* GetEntryByName(const gcstring& Symbolic) override {
        return entry(engine().entryOf(id(), Symbolic.view()));
    }
    [[nodiscard]] IEnumEntry* GetEntry(std::int64_t IntValue) override {
        const Call call(map());
        return entry(engine().entryOf(id(), IntValue));
    }
    [[nodiscard]] IEnumEntry* GetCurrentEntry(bool, bool IgnoreCache) override {
        const Call call(map());
        engine().requireReadable(id());
        return entry(engine().currentEntry(id(), useUnless(IgnoreCache)));
    }

private:
    [[nodiscard]] IEnumEntry* entry(NodeId entry) const {
        return dynamic_cast<IEnumEntry*>(map().nodeOf(entry));
    }
};

class CommandLayer : public ValueLayer, public ICommand {
public:
    using ValueLayer::ValueLayer;
    void Execute(bool) override {
        const Call call(map());
        engine().execute(id());
    }
    [[nodiscard]] bool IsDone(bool) override {
        const Call call(map());
        return engine().isDone(id());
    }
};

class StringLayer : public ValueLayer, public IString {
public:
    using IString::operator=;
    using ValueLayer::ValueLayer;
    void SetValue(const gcstring& Value, bool) override {
        const Call call(map());
        engine().setText(id(), Value.view());
    }
    [[nodiscard]] gcstring GetValue(bool, bool IgnoreCache) override {
        const Call call(map());
        engine().requireReadable(id());
        return gcstring(engine().text(id(), useUnless(IgnoreCache)));
    }
    [[nodiscard]] std::int64_t GetMaxLength() override {
        const Call call(map());
        return engine().maximumLength(id());
    }
};

class CategoryLayer : public ValueLayer, public ICategory {
public:
    using ValueLayer::ValueLayer;
    void GetFeatures(FeatureList_t& Features) const override {
        map().toFeatures(description().list(row().members), Features);
    }
};

class PortLayer : public NodeHandle, public IPort, public IPortConstruct {
public:
    using NodeHandle::NodeHandle;
    void SetPortImpl(IPort* pPort) override { map().connectPort(id(), pPort); }
    [[nodiscard]] EYesNo GetSwapEndianess() override { return port().swapEndianess ? Yes : No; }
    [[nodiscard]] bool IsChunkPort() const override {
        return port().hasChunkId || port().chunkIdNode != noNode;
    }
    [[nodiscard]] bool CacheChunkData() const override { return port().cacheChunkData; }
    [[nodiscard]] bool GetChunkID(std::uint64_t& ChunkID) override {
        if (port().chunkIdNode == noNode) {
            ChunkID = port().chunkId;
            return port().hasChunkId;
        }
        const Call call(map());
        std::int64_t value = 0;
        const bool isKnown = engine().tryInteger(port().chunkIdNode, value);
        ChunkID = static_cast<std::uint64_t>(value);
        return isKnown;
    }
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        const Call call(map());
        checkAccess(pBuffer, Length);
        engine().requireReadable(id());
        engine().readPort(id(), pBuffer, Address, Length);
    }
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        const Call call(map());
        checkAccess(pBuffer, Length);
        engine().requireWritable(id());
        engine().writeRaw(id(), pBuffer, Address, Length);
    }

private:
    [[nodiscard]] const PortDetail& port() const { return description().ports[row().detail]; }
    void checkAccess(const void* buffer, std::int64_t length) {
        if (buffer == nullptr || length < 0) {
            GENAPI_THROW(InvalidArgumentException, engine().says(id(), "is given no buffer."));
        }
    }
};

// Calls `use` with a null pointer of the handle's type.
template <typename Use>
auto withType(Kind kind, Use use) {
    switch (kind) {
        case Kind::category:
            return use(static_cast<CategoryLayer*>(nullptr));
        case Kind::intReg:
        case Kind::maskedIntReg:
        case Kind::advancedFeature:
        case Kind::smartFeature:
            return use(static_cast<RegisterLayer<IntegerLayer>*>(nullptr));
        case Kind::floating:
        case Kind::swissKnife:
        case Kind::converter:
            return use(static_cast<FloatLayer*>(nullptr));
        case Kind::floatReg:
            return use(static_cast<RegisterLayer<FloatLayer>*>(nullptr));
        case Kind::boolean:
            return use(static_cast<BooleanLayer*>(nullptr));
        case Kind::enumeration:
            return use(static_cast<EnumerationLayer*>(nullptr));
        case Kind::enumEntry:
            return use(static_cast<EnumEntryLayer*>(nullptr));
        case Kind::command:
            return use(static_cast<CommandLayer*>(nullptr));
        case Kind::string:
        case Kind::configText:
            return use(static_cast<StringLayer*>(nullptr));
        case Kind::stringReg:
            return use(static_cast<RegisterLayer<StringLayer>*>(nullptr));
        case Kind::byteRegister:
        case Kind::configRom:
            return use(static_cast<RegisterLayer<ValueLayer>*>(nullptr));
        case Kind::port:
            return use(static_cast<PortLayer*>(nullptr));
        default:
            return use(static_cast<IntegerLayer*>(nullptr));
    }
}

}  // namespace

std::size_t handleSize(Kind kind) {
    return withType(kind, [](auto* type) {
        using Type = std::remove_pointer_t<decltype(type)>;
        static_assert(alignof(Type) <= alignof(std::max_align_t));
        constexpr std::size_t unit = alignof(std::max_align_t);
        return (sizeof(Type) + unit - 1) / unit * unit;
    });
}

INode* makeHandle(Kind kind, std::byte* place, NodeMap& map, NodeId id) {
    return withType(kind, [&](auto* type) -> INode* {
        using Type = std::remove_pointer_t<decltype(type)>;
        return new (place) Type(map, id);
    });
}

void destroyHandle(INode* handle) noexcept {
    static_cast<NodeHandle*>(handle)->~NodeHandle();
}

}  // namespace GenApi::Detail
