// The settings store of a node over JSON: sections are objects, keys are any text and keep the
// order in which they were stored, integers are exact to 64 bits.
//
// A store belongs to one thread at a time. Copies of the pointer and the stores of sections share
// one document.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "orlixdataprocessingcore/core/settings.h"
#include "orlixhost/api.h"

namespace Orlix::Host {

using GenICam::gcstring;

struct SettingsDocument;

// What a failed get or set says: `setting "a.b[3]": expected a text, found the number 5`, as a
// RuntimeException. The store also remembers what was asked of it, so that a host can tell keys
// that nobody has read.
class ORLIXHOST_API JsonSettings final : public DataProcessing::Core::ISettings {
public:
    using Path = DataProcessing::Core::SettingsPath;

    // An empty base path means that the recipe has no folder of its own.
    explicit JsonSettings(const std::string& basePath = {});
    // From the text of a JSON object; throws RuntimeException for anything else.
    static std::shared_ptr<JsonSettings> fromText(const std::string& json,
                                                  const std::string& basePath = {});
    explicit JsonSettings(std::shared_ptr<SettingsDocument> document);
    ~JsonSettings() override;
    JsonSettings(const JsonSettings&) = delete;
    JsonSettings& operator=(const JsonSettings&) = delete;

    [[nodiscard]] std::string toText() const;
    [[nodiscard]] const SettingsDocument& document() const noexcept { return *document_; }
    // The path that was read last, in the form of messages; empty before the first read.
    [[nodiscard]] std::string lastRead() const;
    // The paths that were never read and that the other store does not have either.
    [[nodiscard]] std::vector<std::string> unknownKeys(const JsonSettings& saved) const;

    bool hasBasePath() override;
    gcstring getBasePath() override;

    bool contains(const Path& path) override;
    std::vector<gcstring> getKeys(const Path& path) override;
    std::size_t getArraySize(const Path& path) override;

    bool getBool(const Path& path) override;
    gcstring getString(const Path& path) override;
    std::int64_t getInteger(const Path& path) override;
    std::uint64_t getUnsigned(const Path& path) override;
    double getFloat(const Path& path) override;

    void setBool(const Path& path, bool value) override;
    void setString(const Path& path, const gcstring& value) override;
    void setInteger(const Path& path, std::int64_t value) override;
    void setUnsigned(const Path& path, std::uint64_t value) override;
    void setFloat(const Path& path, double value) override;

    std::shared_ptr<ISettings> createSection(const Path& path) override;
    void setArraySize(const Path& path, std::size_t size) override;

private:
    // A section of the same document.
    JsonSettings(std::shared_ptr<SettingsDocument> document, std::vector<Path::Element> prefix);
    [[nodiscard]] std::vector<Path::Element> absolute(const Path& path) const;

    std::shared_ptr<SettingsDocument> document_;
    std::vector<Path::Element> prefix_;
};

}  // namespace Orlix::Host
