#include "aravis/descriptions.h"

#include <cstdlib>
#include <map>
#include <mutex>
#include <string_view>
#include <utility>

namespace Orlix::Aravis {
namespace {

struct Shared {
    std::mutex mutex;
    std::map<std::size_t, std::weak_ptr<const std::string>> texts;  // by hash
};

// Never destroyed: a camera may be opened while the program ends.
Shared& shared() {
    static auto* const object = new Shared;
    return *object;
}

int numberOf(std::string_view head, std::string_view attribute, int otherwise) {
    const std::size_t at = head.find(attribute);
    if (at == std::string_view::npos) {
        return otherwise;
    }
    const std::size_t quote = head.find_first_of("\"'", at);
    return quote == std::string_view::npos
               ? otherwise
               : std::atoi(std::string(head.substr(quote + 1, 4)).c_str());
}

}  // namespace

std::shared_ptr<const std::string> ShareDescription(std::string text) {
    const std::size_t hash = std::hash<std::string>()(text);
    Shared& all = shared();
    const std::scoped_lock lock(all.mutex);
    std::weak_ptr<const std::string>& place = all.texts[hash];
    if (auto known = place.lock(); known != nullptr && *known == text) {
        return known;
    }
    auto fresh = std::make_shared<const std::string>(std::move(text));
    place = fresh;
    return fresh;
}

bool IsBeforeSchema11(const std::string& text) {
    const std::string_view all(text);
    const std::size_t begin = all.find("<RegisterDescription");
    if (begin == std::string_view::npos) {
        return false;
    }
    const std::string_view head = all.substr(begin, all.find('>', begin) - begin);
    return numberOf(head, "SchemaMajorVersion", 1) == 1 &&
           numberOf(head, "SchemaMinorVersion", 1) == 0;
}

}  // namespace Orlix::Aravis
