// A GenApi map over values of the library itself: a table of registers becomes a description, and a
// port serves the values. Nothing is cached, so that a map always shows what is.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "gcbase/gcstring.h"
#include "genapi/nodemapref.h"
#include "genapi/portimpl.h"

namespace Orlix::Detail {

using GenICam::gcstring;

enum class RegisterKind : std::uint8_t { Integer, Boolean, Text };

// When a register may be written.
enum class Writable : std::uint8_t { Never, WhileClosed, WhileNotGrabbing };

// When a register is there at all.
enum class Available : std::uint8_t { Always, UnlessZero };

// One row of a table, and one feature of the map.
struct RegisterRow {
    const char* category;
    const char* name;
    const char* displayName;
    const char* toolTip;
    RegisterKind kind = RegisterKind::Integer;
    Writable writable = Writable::Never;
    std::int64_t minimum = 0;  // these two of writable integers
    std::int64_t maximum = 0;
    Available available = Available::Always;
};

// Where the values are. Called with the map's lock held, on any thread; must take only leaf locks.
class IRegisters {
public:
    virtual ~IRegisters() = default;
    IRegisters(const IRegisters&) = delete;
    IRegisters& operator=(const IRegisters&) = delete;

    // False makes every register unavailable.
    [[nodiscard]] virtual bool IsPresent() const = 0;
    [[nodiscard]] virtual bool IsOpen() const = 0;
    [[nodiscard]] virtual bool IsGrabbing() const = 0;
    // By number of the row.
    [[nodiscard]] virtual std::int64_t GetInteger(std::size_t row) const = 0;
    virtual void SetInteger(std::size_t row, std::int64_t value) = 0;
    [[nodiscard]] virtual gcstring GetText(std::size_t row) const = 0;

protected:
    IRegisters() = default;
};

// The table and the texts in it live as long as the process; maps of one table share a description.
class RegisterMap {
public:
    RegisterMap(const char* deviceName, std::span<const RegisterRow> table,
                std::shared_ptr<IRegisters> registers);
    ~RegisterMap();

    [[nodiscard]] GenApi::INodeMap& Get() const { return *map_; }
    // Tells those who have callbacks on the map that access or values may have changed.
    void Invalidate();

private:
    class Port;

    GenApi::CNodeMapRef map_;
    const std::unique_ptr<Port> port_;
};

}  // namespace Orlix::Detail
