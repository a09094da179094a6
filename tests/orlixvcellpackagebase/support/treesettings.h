// A settings store in memory with sections and arrays, in the order of writing. Keys are any text.
// Belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/settings.h"

namespace Plugin::OrlixVCellPackageBase {

class TreeSettings final : public Orlix::DataProcessing::Core::ISettings {
public:
    using gcstring = GenICam::gcstring;
    using SettingsPath = Orlix::DataProcessing::Core::SettingsPath;

    TreeSettings() : root_(std::make_shared<Item>()) {}

    bool hasBasePath() override { return false; }
    gcstring getBasePath() override { return ""; }

    bool contains(const SettingsPath& path) override { return find(path) != nullptr; }
    std::vector<gcstring> getKeys(const SettingsPath& path) override {
        std::vector<gcstring> keys;
        for (const auto& [key, item] : at(path).children) {
            keys.push_back(key);
        }
        return keys;
    }
    std::size_t getArraySize(const SettingsPath& path) override { return at(path).children.size(); }

    bool getBool(const SettingsPath& path) override { return get<bool>(path); }
    gcstring getString(const SettingsPath& path) override { return get<gcstring>(path); }
    std::int64_t getInteger(const SettingsPath& path) override { return get<std::int64_t>(path); }
    std::uint64_t getUnsigned(const SettingsPath& path) override {
        return get<std::uint64_t>(path);
    }
    double getFloat(const SettingsPath& path) override { return get<double>(path); }

    void setBool(const SettingsPath& path, bool value) override { make(path).value = value; }
    void setString(const SettingsPath& path, const gcstring& value) override {
        make(path).value = value;
    }
    void setInteger(const SettingsPath& path, std::int64_t value) override {
        make(path).value = value;
    }
    void setUnsigned(const SettingsPath& path, std::uint64_t value) override {
        make(path).value = value;
    }
    void setFloat(const SettingsPath& path, double value) override { make(path).value = value; }

    std::shared_ptr<ISettings> createSection(const SettingsPath& path) override {
        auto section = std::make_shared<TreeSettings>();
        make(path);
        section->root_ = locate(path);
        section->root_->children.clear();
        return section;
    }
    void setArraySize(const SettingsPath& path, std::size_t size) override {
        Item& array = make(path);
        array.children.clear();
        for (std::size_t i = 0; i < size; ++i) {
            array.children.emplace_back(std::to_string(i).c_str(), std::make_shared<Item>());
        }
    }

    // Short forms for a test.
    [[nodiscard]] static SettingsPath path(const char* key) { return SettingsPath(key); }
    template <typename Element>
    [[nodiscard]] static SettingsPath path(const char* key, Element element) {
        SettingsPath result(key);
        result.addElement(element);
        return result;
    }
    void setTexts(const char* key, const std::vector<const char*>& texts) {
        setArraySize(path(key), texts.size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            setString(path(key, i), texts[i]);
        }
    }
    [[nodiscard]] std::vector<std::string> texts(const char* key) {
        std::vector<std::string> result;
        for (std::size_t i = 0; i < getArraySize(path(key)); ++i) {
            result.push_back(getString(path(key, i)).str());
        }
        return result;
    }
    [[nodiscard]] std::vector<std::string> keys() const { return keysOf(*root_); }
    [[nodiscard]] std::vector<std::string> keys(const char* section) {
        return keysOf(at(path(section)));
    }

private:
    using Value = std::variant<std::monostate, bool, gcstring, std::int64_t, std::uint64_t, double>;
    struct Item {
        Value value;
        std::vector<std::pair<gcstring, std::shared_ptr<Item>>> children;
    };

    static std::vector<std::string> keysOf(const Item& item) {
        std::vector<std::string> keys;
        for (const auto& child : item.children) {
            keys.push_back(child.first.str());
        }
        return keys;
    }

    static gcstring keyOf(const SettingsPath::Element& element) {
        return std::holds_alternative<gcstring>(element)
                   ? std::get<gcstring>(element)
                   : gcstring(std::to_string(std::get<std::size_t>(element)).c_str());
    }

    static std::shared_ptr<Item> child(const Item& item, const gcstring& key) {
        for (const auto& [name, entry] : item.children) {
            if (name == key) {
                return entry;
            }
        }
        return nullptr;
    }

    [[nodiscard]] std::shared_ptr<Item> locate(const SettingsPath& path) const {
        std::shared_ptr<Item> item = root_;
        for (const auto& element : path.getElements()) {
            item = item != nullptr ? child(*item, keyOf(element)) : nullptr;
        }
        return item;
    }
    [[nodiscard]] Item* find(const SettingsPath& path) const { return locate(path).get(); }
    [[nodiscard]] Item& at(const SettingsPath& path) const {
        Item* item = find(path);
        if (item == nullptr) {
            throw GenICam::RuntimeException(path.toString().c_str(), __FILE__, __LINE__);
        }
        return *item;
    }
    Item& make(const SettingsPath& path) {
        std::shared_ptr<Item> item = root_;
        for (const auto& element : path.getElements()) {
            std::shared_ptr<Item> next = child(*item, keyOf(element));
            if (next == nullptr) {
                next = std::make_shared<Item>();
                item->children.emplace_back(keyOf(element), next);
            }
            item = next;
        }
        return *item;
    }
    template <typename T>
    T get(const SettingsPath& path) const {
        const Value& value = at(path).value;
        if (!std::holds_alternative<T>(value)) {
            throw GenICam::RuntimeException("a value of another kind", __FILE__, __LINE__);
        }
        return std::get<T>(value);
    }

    std::shared_ptr<Item> root_;
};

}  // namespace Plugin::OrlixVCellPackageBase
