// The engine of one map: values, caches and the rules of access on top of a shared description. It
// knows no lock and no callback; NodeMap calls it under the map's lock and delivers what it
// gathered as changed. Its errors name the node, the value, the range and the cause, while what a
// port throws passes through untouched.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "genapi/description.h"
#include "genapi/enginestate.h"
#include "genapi/iport.h"

namespace GenApi::Detail {

enum class Ask { reading, writing };
enum class Verify { no, yes };
enum class CacheUse { allowed, ignored };

// One thread at a time, but a port may call back into it from its Read and Write.
class Engine {
public:
    explicit Engine(std::shared_ptr<const Description> description);
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    [[nodiscard]] const Description& description() const { return *d_; }

    // Begins a call from outside: what it may cost is bounded.
    void begin() {
        stepsLeft_ = maximumSteps;
        mustTravel_ = false;
        denialCount_ = 0;
        ++moment_;
    }

    // ---- Access. The one function behind every report and every access. A question about reading
    // leaves the locks alone.
    [[nodiscard]] EAccessMode access(NodeId id, Ask ask);
    // The same for a report: a node that can not be evaluated is not available. Only what a port
    // throws comes through.
    [[nodiscard]] EAccessMode report(NodeId id);
    void requireReadable(NodeId id);
    void requireWritable(NodeId id);
    void imposeAccess(NodeId id, EAccessMode mode);

    // ---- Values of nodes that were found readable.
    [[nodiscard]] std::int64_t integer(NodeId id, CacheUse use = CacheUse::allowed);
    [[nodiscard]] double real(NodeId id, CacheUse use = CacheUse::allowed);
    // False for a node that can not be evaluated now. Only what a port throws comes through.
    [[nodiscard]] bool tryInteger(NodeId id, std::int64_t& value);
    [[nodiscard]] bool truth(NodeId id, CacheUse use = CacheUse::allowed);
    [[nodiscard]] std::string text(NodeId id, CacheUse use = CacheUse::allowed);
    // The entry that has the enumeration's value; noNode if none has.
    [[nodiscard]] NodeId currentEntry(NodeId enumeration, CacheUse use = CacheUse::allowed);
    [[nodiscard]] NodeId entryOf(NodeId enumeration, std::int64_t value);
    [[nodiscard]] NodeId entryOf(NodeId enumeration, std::string_view symbolic) const;
    [[nodiscard]] bool isDone(NodeId command);

    // ---- Ranges.
    [[nodiscard]] std::int64_t minimum(NodeId id);
    [[nodiscard]] std::int64_t maximum(NodeId id);
    [[nodiscard]] std::int64_t increment(NodeId id);
    [[nodiscard]] double realMinimum(NodeId id);
    [[nodiscard]] double realMaximum(NodeId id);
    // 0 for none.
    [[nodiscard]] double realIncrement(NodeId id);
    // The only values that may be written, ascending; empty where the increment decides.
    [[nodiscard]] std::vector<std::int64_t> validIntegers(NodeId id);
    [[nodiscard]] std::vector<double> validReals(NodeId id);
    [[nodiscard]] std::int64_t maximumLength(NodeId id);
    void imposeMinimum(NodeId id, double value);
    void imposeMaximum(NodeId id, double value);
    void imposeMinimum(NodeId id, std::int64_t value);
    void imposeMaximum(NodeId id, std::int64_t value);

    // ---- Writing, checks of access and range included. Nothing is written if a check fails.
    void setInteger(NodeId id, std::int64_t value, Verify verify);
    void setReal(NodeId id, double value, Verify verify);
    void setText(NodeId id, std::string_view value);
    void setSymbolic(NodeId enumeration, std::string_view symbolic);
    void execute(NodeId command);

    // ---- The text view of any node with a value, checks of access included.
    [[nodiscard]] std::string toText(NodeId id, CacheUse use);
    void fromText(NodeId id, std::string_view text, Verify verify);

    // ---- Registers.
    [[nodiscard]] std::int64_t address(NodeId id);
    [[nodiscard]] std::int64_t length(NodeId id) {
        const Number& given = registerOf(id).length;
        return given.link == noNode ? given.integer : linkedLength(id);
    }
    void readBytes(NodeId id, std::span<std::uint8_t> bytes, CacheUse use);
    void setBytes(NodeId id, std::span<const std::uint8_t> bytes);
    [[nodiscard]] bool isCached(NodeId id);
    [[nodiscard]] bool areVariablesCached(NodeId id);

    // ---- Inherited along value links and from what a table chooses.
    [[nodiscard]] ERepresentation representation(NodeId id);
    [[nodiscard]] EDisplayNotation notation(NodeId id);
    [[nodiscard]] std::int64_t precision(NodeId id);
    [[nodiscard]] std::string_view unit(NodeId id);
    [[nodiscard]] ECachingMode caching(NodeId id) const;

    // ---- Invalidation. No port is touched.
    void invalidate(NodeId id);
    void invalidateAll();
    void poll(std::int64_t milliseconds);

    // ---- Ports. Null disconnects.
    void connect(NodeId portNode, IPort* port);
    [[nodiscard]] IPort* connected(NodeId portNode) const {
        return ports_[node(portNode).detail].port;
    }
    void readPort(NodeId portNode, void* buffer, std::int64_t address, std::int64_t length);
    // A write past all registers, of which any may be meant.
    void writeRaw(NodeId portNode, const void* buffer, std::int64_t address, std::int64_t length);
    void writePort(NodeId portNode, const void* buffer, std::int64_t address, std::int64_t length);

    // ---- Changes of watched nodes since the last take, each once, causes first.
    void watch(NodeId id, bool watched) { nodes_[id].watched = watched; }
    [[nodiscard]] bool hasChanges() const { return !changed_.empty(); }
    // Until the next change.
    [[nodiscard]] std::span<const NodeId> takeChanges();

    // "Node 'NAME' REST", behind the nodes that led there.
    [[nodiscard]] std::string says(NodeId id, std::string_view rest) const;

private:
    // What is being worked out for a node; meeting it again is a circle.
    enum Busy : std::uint8_t {
        busyReading = 1,
        busyWriting = 2,
        busyValue = 4,
        busyMinimum = 8,
        busyMaximum = 16,
        busyIncrement = 32,
        busyAddress = 64
    };
    static constexpr std::uint32_t maximumSteps = 2'000'000;
    static constexpr int maximumDepth = 200;

    // A node on the way from the one that was asked for; for the texts of errors.
    class Path {
    public:
        Path(Engine& engine, NodeId id) : engine_(engine), outer_(engine.path_), id_(id) {
            engine_.path_ = this;
        }
        ~Path() { engine_.path_ = outer_; }
        Path(const Path&) = delete;
        Path& operator=(const Path&) = delete;
        [[nodiscard]] NodeId id() const { return id_; }
        [[nodiscard]] const Path* outer() const { return outer_; }

    private:
        Engine& engine_;
        const Path* outer_;
        NodeId id_;
    };

    // Marks a node busy for a scope, and counts depth and steps.
    class Visit {
    public:
        Visit(Engine& engine, NodeId id, Busy what)
            : engine_(engine), id_(id), what_(what), path_(engine, id) {
            NodeState& state = engine_.nodes_[id_];
            // What lacks a part has an access mode, but nothing else.
            const bool isUnusable =
                (what_ & (busyReading | busyWriting)) == 0 && engine_.node(id_).broken.count != 0;
            if ((state.busy & what_) != 0 || isUnusable || engine_.depth_ >= maximumDepth ||
                engine_.stepsLeft_ == 0) {
                engine_.refuseVisit(id_, (state.busy & what_) != 0);
            }
            state.busy = static_cast<std::uint8_t>(state.busy | what_);
            ++engine_.depth_;
            --engine_.stepsLeft_;
        }
        ~Visit() {
            NodeState& state = engine_.nodes_[id_];
            state.busy = static_cast<std::uint8_t>(state.busy & ~what_);
            --engine_.depth_;
        }
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;

    private:
        Engine& engine_;
        NodeId id_;
        Busy what_;
        Path path_;
    };

    [[noreturn]] void refuseVisit(NodeId id, bool circle);

    // engineaccess.cpp
    [[nodiscard]] EAccessMode coreAccess(NodeId id, Ask ask);
    [[nodiscard]] EAccessMode conditionalAccess(NodeId id, Ask ask);
    [[nodiscard]] EAccessMode sourceAccess(NodeId id, Ask ask);
    [[nodiscard]] EAccessMode numberAccess(NodeId id, Ask ask);
    [[nodiscard]] EAccessMode registerAccess(NodeId id);
    [[nodiscard]] EAccessMode portAccess(NodeId id);
    [[nodiscard]] EAccessMode implementedAccess(NodeId id);
    [[nodiscard]] bool rangesReadable(NodeId id);
    [[nodiscard]] bool linkReadable(NodeId owner, NodeId link);
    // The truth of a link, or nothing where it can not be read.
    enum class Condition : std::uint8_t { no, yes, unreadable };
    [[nodiscard]] Condition condition(NodeId link);
    EAccessMode deny(NodeId id, Denial why, NodeId culprit, EAccessMode mode);
    // The denials since `mark`, the one of the node that was asked for first.
    [[nodiscard]] std::string explainDenial(std::size_t mark = 0) const;
    [[nodiscard]] std::string textOf(std::size_t denial) const;

    // enginevalues.cpp
    void requireLink(NodeId link);
    [[nodiscard]] std::int64_t linkedInteger(NodeId link, CacheUse use = CacheUse::allowed);
    [[nodiscard]] double linkedReal(NodeId link, CacheUse use = CacheUse::allowed);
    [[nodiscard]] std::int64_t integerOf(const Number& number);
    [[nodiscard]] double realOf(const Number& number);
    // Where an Integer or a Float has its value now, following its table.
    [[nodiscard]] Number sourceOf(NodeId id) {
        const NumberDetail& detail = d_->numbers[node(id).detail];
        if (detail.index != noNode) {
            return tableSource(detail);
        }
        Number source;
        source.link = node(id).value;
        source.given = source.link != noNode;
        return source;
    }
    [[nodiscard]] NodeId heritage(NodeId id);
    template <typename Has>
    [[nodiscard]] NodeId firstThat(NodeId id, Has has);
    [[nodiscard]] Number tableSource(const NumberDetail& detail);
    [[nodiscard]] std::int64_t toInteger(NodeId id, double value) const;
    [[nodiscard]] double realValue(NodeId id, CacheUse use);
    [[nodiscard]] std::int64_t registerInteger(NodeId id, CacheUse use);

    // engineconfig.cpp
    [[nodiscard]] std::int64_t configInteger(NodeId id, CacheUse use);
    [[nodiscard]] std::string configString(NodeId id, CacheUse use);
    [[nodiscard]] std::vector<std::uint8_t> configRom(NodeId id, CacheUse use);
    [[noreturn]] void refuseConfigKey(NodeId id) const;

    // engineformula.cpp
    [[nodiscard]] EAccessMode formulaAccess(NodeId id, Ask ask);
    [[nodiscard]] FormulaNumber formulaValue(NodeId id, CacheUse use);
    [[nodiscard]] FormulaNumber targetValue(NodeId id, CacheUse use);
    [[nodiscard]] FormulaNumber evaluate(NodeId id, const Program& program, FormulaNumber argument,
                                         CacheUse use = CacheUse::allowed);
    // The same, letting out a FormulaFault.
    [[nodiscard]] FormulaNumber evaluateOrFault(NodeId id, const Program& program,
                                                FormulaNumber argument, CacheUse use);
    // A target's end in the converter's own unit; nothing where the formula is not defined there.
    [[nodiscard]] std::optional<FormulaNumber> evaluateEnd(NodeId id, FormulaNumber end);
    [[nodiscard]] FormulaNumber run(NodeId id, const Program& program, FormulaNumber argument,
                                    std::size_t frame, CacheUse use);
    enum class Check { access, none };
    [[nodiscard]] FormulaNumber variableValue(const FormulaVariable& variable, Check check,
                                              CacheUse use);
    // What a converter's target would be given for a value.
    [[nodiscard]] FormulaNumber converted(NodeId id, FormulaNumber value);
    void checkConverted(NodeId id, FormulaNumber value, Verify verify);
    void storeConverted(NodeId id, FormulaNumber value);
    [[nodiscard]] std::int64_t convertedInteger(NodeId id, FormulaNumber result) const;
    [[nodiscard]] std::int64_t integerResult(NodeId id, FormulaNumber value) const;
    // The ends of a converter's range, lower first; an end that its target does not have is none.
    struct ConvertedRange {
        FormulaNumber minimum, maximum;
    };
    [[nodiscard]] ConvertedRange convertedRange(NodeId id);
    [[nodiscard]] bool isFalling(NodeId id, bool hasLow, FormulaNumber fromLow, bool hasHigh,
                                 FormulaNumber fromHigh, FormulaNumber low, FormulaNumber high);
    [[nodiscard]] FormulaNumber convertedIncrement(NodeId id);
    [[nodiscard]] std::vector<FormulaNumber> validValues(NodeId id);

    // engineranges.cpp
    [[nodiscard]] std::int64_t registerMinimum(NodeId id);
    [[nodiscard]] std::int64_t registerMaximum(NodeId id);
    [[nodiscard]] ImposedRange& imposed(NodeId id);
    [[nodiscard]] const ImposedRange* imposedOn(NodeId id) const;

    // enginewrite.cpp: all checks first, down the whole chain, then the writes.
    void checkInteger(NodeId id, std::int64_t value, Verify verify);
    void checkReal(NodeId id, double value, Verify verify);
    void checkRange(NodeId id, std::int64_t value);
    [[nodiscard]] bool isInFixedRange(NodeId id, std::int64_t value) const;
    [[nodiscard]] bool isListed(NodeId id, std::int64_t value);
    void checkEntry(NodeId enumeration, std::int64_t value);
    void checkText(NodeId id, std::string_view value);
    void storeInteger(NodeId id, std::int64_t value);
    void storeReal(NodeId id, double value);
    void storeText(NodeId id, std::string_view value);
    void storeRegisterInteger(NodeId id, std::int64_t value);
    void checkErrorNode(NodeId id);
    void checkErrorNodes(NodeId id);
    [[nodiscard]] std::vector<std::uint8_t> bytesOf(NodeId id, std::string_view text);
    [[nodiscard]] NodeId nearestEntry(NodeId enumeration, double value);

    // engineregisters.cpp
    [[nodiscard]] std::int64_t linkedLength(NodeId id);
    [[nodiscard]] BitField fieldOf(NodeId id, std::int64_t bytes) const {
        const RegisterDetail& detail = registerOf(id);
        return detail.width != 0 ? BitField{detail.shift, detail.width} : linkedField(id, bytes);
    }
    [[nodiscard]] BitField linkedField(NodeId id, std::int64_t bytes) const;
    void writeBytes(NodeId id, std::span<const std::uint8_t> bytes);
    void keep(NodeId id, std::int64_t address, std::span<const std::uint8_t> bytes);
    void dropBytes(std::uint32_t registerIndex);
    void dropOverlapping(NodeId port, std::int64_t address, std::int64_t length);
    void dropFrom(PortState& port, std::int64_t address, std::int64_t length);
    void dropFrom(PortState& port, std::uint8_t bucket, std::int64_t address, std::int64_t length);
    [[nodiscard]] static std::uint8_t bucketOf(std::int64_t address, std::int64_t length);
    // What a port throws must reach the caller; its calls back into the engine start clean.
    template <typename Call>
    void throughPort(Call call) {
        const bool before = mustTravel_;
        const Path* const path = path_;
        mustTravel_ = false;
        path_ = nullptr;
        try {
            call();
        } catch (...) {
            mustTravel_ = true;
            path_ = path;
            throw;
        }
        path_ = path;
        mustTravel_ = before;
    }
    void transfer(NodeId portNode, std::span<std::uint8_t> bytes, std::int64_t address);

    // engine.cpp
    void touch(NodeId id);
    void dropClosureBytes(NodeId id);
    [[nodiscard]] bool isPollable(NodeId id);
    [[nodiscard]] bool isWriteOnly(NodeId id) const;

    [[nodiscard]] const Node& node(NodeId id) const { return d_->nodes[id]; }
    [[nodiscard]] bool isUnconditional(NodeId id) const {
        return node(id).unconditional && nodes_[id].imposedAccess == RW;
    }
    [[nodiscard]] const RegisterDetail& registerOf(NodeId id) const {
        return d_->registers[node(id).detail];
    }

    std::shared_ptr<const Description> d_;
    std::vector<NodeState> nodes_;
    std::vector<RegisterState> registers_;
    std::vector<std::uint8_t> hasBytes_;  // of each register
    std::vector<PortState> ports_;
    std::vector<HeldNumber> heldNumbers_;
    std::vector<std::string> heldTexts_;
    std::vector<std::int64_t> pollElapsed_;
    std::unordered_map<NodeId, ImposedRange> imposedRanges_;
    std::vector<NodeId> changed_, taken_;
    // Variables and intermediate results of the formulas being worked out, one behind the other.
    std::vector<FormulaNumber> formulaStack_;
    std::vector<std::uint8_t> formulaKnown_;
    // What the converters on the way of a write were found to give their targets.
    std::vector<Conversion> conversions_;
    // Of each formula, when all its variables were found readable.
    std::vector<std::uint64_t> variablesSeen_;
    std::size_t formulaTop_ = 0;

    std::uint32_t stepsLeft_ = maximumSteps;
    int depth_ = 0;
    // Grows with each invalidation, so that bytes read meanwhile are not kept.
    std::uint64_t generation_ = 0;
    // The exception under way comes from a port, or ends the call: no link may swallow it.
    bool mustTravel_ = false;
    // Why nodes could not be accessed, the cause before what came of it.
    std::array<DenialStep, 12> denials_;
    std::size_t denialCount_ = 0;
    std::string failure_;  // the text of the last error that made a condition unreadable
    const Path* path_ = nullptr;
    // Grows with each call from outside and each change, so that what was seen before is not taken
    // for what is.
    std::uint64_t moment_ = 1;
};

}  // namespace GenApi::Detail
