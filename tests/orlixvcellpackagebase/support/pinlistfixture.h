// What the list of event pins and the list of chunk pins of a Camera have in common.
#pragma once

#include <cstdint>
#include <string>

#include "support/camerafixture.h"

namespace Plugin::OrlixVCellPackageBase {

// The ports of one list.
struct PinPorts {
    const char* selector;
    const char* selectorMaximum;
    const char* configuration;
    const char* add;
    const char* remove;
};

// Counts the changes of settings that a node tells of.
class SettingsChanges {
public:
    explicit SettingsChanges(Camera& node)
        : lock_(node.getNodeMapInfos().at(0).GetNodeMap()->GetLock()),
          connection_(node.getSettingsChangedSignal()->connect([this] { onChange(); }), true) {}
    SettingsChanges(const SettingsChanges&) = delete;
    SettingsChanges& operator=(const SettingsChanges&) = delete;

    [[nodiscard]] int count() const { return count_; }
    // Whether the thread that told held the node's lock at any of them.
    [[nodiscard]] bool anyUnderLock() const { return underLock_; }

private:
    void onChange() {
        ++count_;
        underLock_ = underLock_ || lock_.IsOwned();
    }

    GenApi::CLock& lock_;
    int count_ = 0;
    bool underLock_ = false;
    Orlix::DataProcessing::Utils::ScopedConnection connection_;
};

class PinListFixture : public CameraFixture {
protected:
    explicit PinListFixture(const PinPorts& ports) : ports_(ports) {}

    void add(const char* configuration) {
        execute(ports_.add);
        setText(ports_.configuration, configuration);
    }
    // The entry that is selected then.
    std::string entry(std::int64_t index) {
        setNumber(ports_.selector, index);
        return text(ports_.configuration);
    }

    void expectEntryPorts(bool available) {
        for (const char* const port : {ports_.selector, ports_.configuration, ports_.remove}) {
            EXPECT_EQ(isAvailable(port), available) << port;
        }
    }
    void expectPortsOfAnEmptyList() {
        expectEntryPorts(false);
        EXPECT_TRUE(isAvailable(ports_.add));
        EXPECT_EQ(number(ports_.selectorMaximum), -1);
    }
    // While the node runs, the command changes nothing, but observers are told all the same.
    void expectThatRemoveInARunOnlyTells(void (Camera::*remove)(),
                                         gcstring (Camera::*configuration)() const,
                                         const char* expected) {
        add(expected);
        const auto before = outputs();
        startWithoutGrabbing();
        const SettingsChanges changes(node());
        (node().*remove)();
        EXPECT_EQ(changes.count(), 1);
        EXPECT_EQ((node().*configuration)(), expected);
        EXPECT_EQ(outputs(), before);
        node().stop();
    }

private:
    const PinPorts ports_;
};

}  // namespace Plugin::OrlixVCellPackageBase
