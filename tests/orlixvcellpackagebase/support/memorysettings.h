// A settings store of plain keys in memory, with the order in which they were written. Belongs to
// one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/settings.h"

namespace Plugin::OrlixVCellPackageBase {

class MemorySettings final : public Orlix::DataProcessing::Core::ISettings {
public:
    using gcstring = GenICam::gcstring;
    using SettingsPath = Orlix::DataProcessing::Core::SettingsPath;
    using Value = std::variant<bool, gcstring, std::int64_t, std::uint64_t, double>;

    // A recipe that has not been saved yet.
    MemorySettings() = default;
    explicit MemorySettings(const std::string& basePath)
        : hasBasePath_(true), basePath_(basePath.c_str()) {}

    bool hasBasePath() override { return hasBasePath_; }
    gcstring getBasePath() override { return basePath_; }

    bool contains(const SettingsPath& path) override { return find(path) != nullptr; }
    std::vector<gcstring> getKeys(const SettingsPath& path) override { unsupported(path); }
    std::size_t getArraySize(const SettingsPath& path) override { unsupported(path); }

    bool getBool(const SettingsPath& path) override { return get<bool>(path); }
    gcstring getString(const SettingsPath& path) override { return get<gcstring>(path); }
    std::int64_t getInteger(const SettingsPath& path) override {
        const Value* value = find(path);
        if (value != nullptr && std::holds_alternative<std::uint64_t>(*value)) {
            return static_cast<std::int64_t>(std::get<std::uint64_t>(*value));
        }
        return get<std::int64_t>(path);
    }
    std::uint64_t getUnsigned(const SettingsPath& path) override {
        return get<std::uint64_t>(path);
    }
    double getFloat(const SettingsPath& path) override { return get<double>(path); }

    void setBool(const SettingsPath& path, bool value) override { set(path, value); }
    void setString(const SettingsPath& path, const gcstring& value) override { set(path, value); }
    void setInteger(const SettingsPath& path, std::int64_t value) override { set(path, value); }
    void setUnsigned(const SettingsPath& path, std::uint64_t value) override { set(path, value); }
    void setFloat(const SettingsPath& path, double value) override { set(path, value); }

    std::shared_ptr<ISettings> createSection(const SettingsPath& path) override {
        unsupported(path);
    }
    void setArraySize(const SettingsPath& path, std::size_t /*size*/) override {
        unsupported(path);
    }

    // For a test to prepare and to look at.
    void set(const char* key, Value value) { set(SettingsPath(key), std::move(value)); }
    [[nodiscard]] Value at(const char* key) {
        const Value* value = find(SettingsPath(key));
        return value != nullptr ? *value : throw std::out_of_range(key);
    }
    [[nodiscard]] std::vector<std::string> keys() const {
        std::vector<std::string> keys;
        for (const auto& [key, value] : values_) {
            keys.emplace_back(key.c_str());
        }
        return keys;
    }

private:
    [[noreturn]] static void unsupported(const SettingsPath& path) {
        throw std::logic_error(std::string("not a plain key: ") + path.toString().c_str());
    }

    Value* find(const SettingsPath& path) {
        for (auto& [key, value] : values_) {
            if (key == path.toString()) {
                return &value;
            }
        }
        return nullptr;
    }

    template <typename T>
    T get(const SettingsPath& path) {
        const Value* value = find(path);
        if (value == nullptr || !std::holds_alternative<T>(*value)) {
            throw GenICam::RuntimeException("no such value", __FILE__, __LINE__);
        }
        return std::get<T>(*value);
    }

    void set(const SettingsPath& path, Value value) {
        if (Value* present = find(path)) {
            *present = std::move(value);
        } else {
            values_.emplace_back(path.toString(), std::move(value));
        }
    }

    bool hasBasePath_ = false;
    gcstring basePath_;
    std::vector<std::pair<gcstring, Value>> values_;
};

}  // namespace Plugin::OrlixVCellPackageBase
