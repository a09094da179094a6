// The store that a node saves its settings to and loads them from. A host implements it over its
// recipe format; a store belongs to one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Core {

using GenICam::gcstring;

// Where a value lies: section names and array indexes from the outside in.
class ORLIXDATAPROCESSINGCORE_API SettingsPath {
public:
    using Element = std::variant<gcstring, std::size_t>;

    SettingsPath() = default;
    explicit SettingsPath(const gcstring& key) { addElement(key); }

    SettingsPath& addElement(const gcstring& key);
    SettingsPath& addElement(std::size_t index);
    [[nodiscard]] const std::vector<Element>& getElements() const noexcept { return elements_; }
    // For messages: "a.b[3].c"
    [[nodiscard]] gcstring toString() const;

private:
    std::vector<Element> elements_;
};

// A get of an absent path, or of a value of another kind, throws RuntimeException that names the
// path and what was found; integers convert between signed and unsigned where the value fits.
// Stores and their users are built apart, so the order of the operations is fixed.
class ORLIXDATAPROCESSINGCORE_API ISettings {
public:
    virtual ~ISettings();

    // Whether the recipe has a folder of its own, and that folder.
    [[nodiscard]] virtual bool hasBasePath() = 0;
    [[nodiscard]] virtual gcstring getBasePath() = 0;

    [[nodiscard]] virtual bool contains(const SettingsPath& path) = 0;
    [[nodiscard]] virtual std::size_t getArraySize(const SettingsPath& path) = 0;
    // Keys of a section in stored order.
    [[nodiscard]] virtual std::vector<gcstring> getKeys(const SettingsPath& path) = 0;

    [[nodiscard]] virtual bool getBool(const SettingsPath& path) = 0;
    [[nodiscard]] virtual gcstring getString(const SettingsPath& path) = 0;
    [[nodiscard]] virtual std::int64_t getInteger(const SettingsPath& path) = 0;
    [[nodiscard]] virtual std::uint64_t getUnsigned(const SettingsPath& path) = 0;
    [[nodiscard]] virtual double getFloat(const SettingsPath& path) = 0;

    // Missing sections on the way are made; an existing value is replaced.
    virtual void setBool(const SettingsPath& path, bool value) = 0;
    virtual void setString(const SettingsPath& path, const gcstring& value) = 0;
    virtual void setInteger(const SettingsPath& path, std::int64_t value) = 0;
    virtual void setUnsigned(const SettingsPath& path, std::uint64_t value) = 0;
    virtual void setFloat(const SettingsPath& path, double value) = 0;

    // Makes the path an array of that size; new elements are empty sections.
    virtual void setArraySize(const SettingsPath& path, std::size_t size) = 0;
    // Makes the path an empty section and gives a store for it, whose paths are relative to it.
    [[nodiscard]] virtual std::shared_ptr<ISettings> createSection(const SettingsPath& path) = 0;
};

}  // namespace Orlix::DataProcessing::Core
