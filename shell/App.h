#pragma once

#include "framework/events/Application.h"
#include "framework/values/MemoryBlock.h"
#include "framework/values/Object.h"
#include "framework/values/Variant.h"

#include <cstdint>
#include <string>

namespace kqu {

class FolderItem;

/// The application object of the messenger: what runs once between the start of the process and the
/// moment the event loop takes over.
class App : public Application {
  public:
    App();
    ~App() override;

    /// Set when the panel has been made and is transparent; a mark that it once existed.
    bool WasWin1 = false;
    /// The user that the process settled on.
    std::int32_t MyUID = 0;

    /// Sets Module1.ParentIsMarlstone from the suite's preference file: true if the file names a
    /// parent application, and that name is not one of the Brackwater family.
    void GetParentApp();

    /// A text of the program's own bundle description, or the three letters "nil" where there is no
    /// such text.
    std::string GetPlistValueForKey(const std::string& key);

    /// The status of a file, given as a FolderItem or as the text of a path: a block with the
    /// owner's 32-bit id at byte offset 12, never nil. A path that is not there reads as owner 0, a
    /// file item without a path as 0xFFFFFFFF. Raises NilObjectException for a file item that is
    /// not there.
    Ref<MemoryBlock> GetLStat(const Variant& file);

    /// A reference to the item, 80 bytes; nil if there is no such item on disk.
    Ref<MemoryBlock> FolderItemToFSRef(const Ref<FolderItem>& item);

    /// A reference to the root of a volume, 80 bytes; zero-filled if there is no such volume.
    Ref<MemoryBlock> VolumeRefToFSRef(std::int32_t vRefNum);

  protected:
    void Event_Open() override;
    bool Event_UnhandledException(const RuntimeException& error) override;

  private:
    void OpenSteps();
    void CheckSystemVersion();
    void BecomeConsoleUser();
    void MakePanel();
};

} // namespace kqu
