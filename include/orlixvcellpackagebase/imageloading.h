// The node that replays image files from a folder, as a camera would. A host creates it through
// create_ImageLoading; a settings dialog that has the node object reads and writes all settings in
// one step through getSettings and setSettings, the two members that the package exports.
//
// Get the object from a node: static_cast<ImageLoading*>(node->getRawPointer()), after a look at
// node->getTypeInfo(). All members may be called from any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "orlixdataprocessingcore/core/advancednode.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixvcellpackagebase/api.h"

namespace Orlix::DataProcessing::Utils {
struct CodePlace;
}

namespace Plugin::OrlixVCellPackageBase {

using GenICam::gcstring;

class IFrameClock;

// The order in which images are output; the values are those of saved recipes.
enum SortBy : std::int32_t { Ascending = 0, Descending = 1, Random = 2 };

// Inputs: none.
// Outputs: "Image", the loaded image, or an image that carries the error of a file that could not
// be loaded; "ImagePath", the full path of that file; "RunCount", the number of the run, from 1.
// Parameters of the map "@vCell": SourcePath, SortBy, NumberOfImages, FramesPerSecond,
// NumberOfRuns, RunContinuously, StoreAbsolutePath. They can be changed while the node is stopped.
// Start argument: "AcquisitionMode", with "SingleFrame" for one image only.
//
//     {"name": "Loader", "type": "ImageLoading",
//      "settings": {"sourcePath": "images", "sortBy": 0, "numberOfImages": 10,
//                   "framesPerSecond": 25, "numberOfRuns": 1, "runContinuously": true}}
//
// Life: one worker thread runs from start to stop; when the last run has ended the node stays
// started until it is stopped. A start without a source path or without images throws; a setter
// throws while the node is not stopped.
// A receiver of the node's own job signals is called by the worker. It may stop the node: that ends
// the run and raises the system error resource_deadlock_would_occur, unless another thread is
// stopping it already; the next start, or the end of the node, waits until the worker has gone. It
// can't start the node again, which is the same error, and must not destroy it.
class ImageLoading : public Orlix::DataProcessing::Core::AdvancedNode,
                     public Orlix::DataProcessing::Core::INodeMapContainer {
public:
    explicit ImageLoading(const std::shared_ptr<Orlix::DataProcessing::Core::IResourcePool>& pool);
    // With a clock of its own; null means the system's.
    ImageLoading(const std::shared_ptr<Orlix::DataProcessing::Core::IResourcePool>& pool,
                 std::shared_ptr<IFrameClock> clock);
    ~ImageLoading() override;
    ImageLoading(const ImageLoading&) = delete;
    ImageLoading& operator=(const ImageLoading&) = delete;

    Orlix::DataProcessing::Utils::TypeInfo getTypeInfo(bool throwOnError) const override;
    const void* getRawPointer() const override;
    void* getRawPointer() override;

    bool isForwardingUpdates() const override;

    void loadSettings(
        const std::shared_ptr<Orlix::DataProcessing::Core::ISettings>& ptrSettings) override;
    void saveSettings(
        const std::shared_ptr<Orlix::DataProcessing::Core::ISettings>& ptrSettings) override;

    std::vector<Orlix::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() override;
    std::shared_ptr<Orlix::DataProcessing::Utils::ISignal<void()>> getNodeMapsChangedSignal()
        override;

    // All settings under one hold of the lock.
    ORLIXVCELLPACKAGEBASE_API void getSettings(gcstring& sourcePath, SortBy& sortBy,
                                               std::uint64_t& numberOfImages,
                                               std::uint64_t& framesPerSecond,
                                               std::uint64_t& numberOfRuns, bool& runContinuously,
                                               bool& storeAbsolutePath);
    // Throws InvalidArgumentException for an empty path or a zero, RuntimeException while the node
    // is not stopped; nothing is changed then.
    ORLIXVCELLPACKAGEBASE_API void setSettings(const gcstring& sourcePath, SortBy sortBy,
                                               std::uint64_t numberOfImages,
                                               std::uint64_t framesPerSecond,
                                               std::uint64_t numberOfRuns, bool runContinuously,
                                               bool storeAbsolutePath);

    // The generated description of the parameters, for looking at.
    [[nodiscard]] gcstring describeParameters();

    [[nodiscard]] gcstring getSourcePath() const;
    [[nodiscard]] SortBy getSortBy() const;
    [[nodiscard]] std::uint64_t getNumberOfImages() const;
    [[nodiscard]] std::uint64_t getFramesPerSecond() const;
    [[nodiscard]] std::uint64_t getNumberOfRuns() const;
    [[nodiscard]] bool getRunContinuously() const;
    [[nodiscard]] bool getStoreAbsolutePath() const;

    // Blanks around the path are dropped.
    void setSourcePath(const gcstring& value);
    void setSortBy(SortBy value);
    void setNumberOfImages(std::uint64_t value);
    void setFramesPerSecond(std::uint64_t value);
    void setNumberOfRuns(std::uint64_t value);
    void setRunContinuously(bool value);
    void setStoreAbsolutePath(bool value);

protected:
    void onStarting(const Orlix::DataProcessing::Core::NodeArgumentCollection& arguments) override;
    void onStopping() override;

private:
    struct Impl;

    void buildParameterTree();
    void setParametersWritable(bool writable);
    [[nodiscard]] bool isSingleFrameStart(
        const Orlix::DataProcessing::Core::NodeArgumentCollection& arguments) const;
    void findImages();
    void joinWorker();
    void collectWorker();

    void checkArgument(bool valid, const char* message,
                       const Orlix::DataProcessing::Utils::CodePlace& place) const;
    void checkStopped(const Orlix::DataProcessing::Utils::CodePlace& place) const;
    template <typename T, typename Port>
    void assign(T Impl::*setting, const T& value, Port Impl::*port);
    template <typename T, typename Port>
    void change(T Impl::*setting, const T& value, Port Impl::*port,
                const Orlix::DataProcessing::Utils::CodePlace& place);

    void saveSourcePath(Orlix::DataProcessing::Core::ISettings& store) const;
    void loadSourcePath(Orlix::DataProcessing::Core::ISettings& store);
    void loadNumbers(Orlix::DataProcessing::Core::ISettings& store);

    // The worker, which takes turns until it is stopped or the last run has ended.
    enum class Turn { Done, Last };
    void runOutputLoop();
    [[nodiscard]] bool isStopRequested() const;
    [[nodiscard]] bool hasNextImage();
    [[nodiscard]] Turn outputImage();
    [[nodiscard]] Turn createOutputJob();

    const std::unique_ptr<Impl> impl_;
};

}  // namespace Plugin::OrlixVCellPackageBase
