// Access to lists and maps that fails with the texts that callers of this node know.
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <vector>

namespace Plugin::OrlixVCellPackageBase {

// Throws std::out_of_range for an index beyond the list.
template <typename Vector>
[[nodiscard]] auto& getElement(Vector& list, std::uint64_t index) {
    if (index >= list.size()) {
        throw std::out_of_range("invalid vector subscript");
    }
    return list[index];
}

// Throws std::out_of_range for an absent key.
template <typename Key, typename T>
[[nodiscard]] const T& getValue(const std::map<Key, T>& map, const Key& key) {
    const auto found = map.find(key);
    if (found == map.end()) {
        throw std::out_of_range("invalid map<K, T> key");
    }
    return found->second;
}

// Removes one entry, and nothing for an index beyond the list.
template <typename T>
void eraseElement(std::vector<T>& list, std::uint64_t index) {
    if (index < list.size()) {
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
