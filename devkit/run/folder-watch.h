// Tells when an author has saved something in an application's folder.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "device/owned.h"
#include "device/when-readable.h"

namespace morvik::devkit {

/// So long nothing may be saved before saves count as over. Ten saves in a second are one change.
inline constexpr std::chrono::milliseconds kQuietAfterSave{250};
/// A change is told that long after its first save at the latest, however many follow.
inline constexpr std::chrono::milliseconds kLongestChange{2000};

/// Watches a folder with all that is below it, on the thread-default main context. Sees files that
/// are written in place and files that are renamed into place, what a link leads to, and the folder
/// itself when it is replaced by another one. Leaves out what editors keep for themselves
/// (isEditorsOwn), and, in an application that writes files, what may be its own (mayBeWritten).
class FolderWatch {
 public:
  /// Gets the names of what was saved, relative to the folder, when saving has come to rest. "." is
  /// the folder itself.
  using Changed = std::function<void(const std::set<std::string>& files)>;

  FolderWatch(std::filesystem::path folder, Changed changed)
      : folder_(std::move(folder)), changed_(std::move(changed)) {}
  ~FolderWatch();
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;

  /// Begins to watch. False when the system does not let it, with the reason in `trouble`. Called
  /// once.
  [[nodiscard]] bool start(std::string& trouble);

 private:
  // A folder that the kernel watches. The application's own and those below are watched whole;
  // others only for some names: the parent for the folder's, and where links lead for their
  // targets'.
  struct Place {
    std::filesystem::path path;
    bool whole = false;
    std::map<std::string, std::string> names = {};  // there, and what they are in the folder
  };

  static gboolean onRest(gpointer watch);
  void take(int place, unsigned what, const std::string& name);
  void takeInFolder(const Place& place, unsigned what, const std::string& name);
  void watchParent();
  void watchTree(const std::filesystem::path& folder);
  void forgetTree(const std::filesystem::path& folder);
  void watchLink(const std::filesystem::path& link);
  void watchOnly(const std::filesystem::path& folder, const std::string& name,
                 const std::string& nameHere);
  int add(const std::filesystem::path& folder, unsigned what);
  void look();
  std::string nameHere(const std::filesystem::path& path) const;
  void note(const std::string& file);
  std::set<std::string> takeChange();

  std::filesystem::path folder_;
  Changed changed_;
  int inotify_ = -1;
  int trouble_ = 0;
  std::map<int, Place> places_;
  GSourceAttached events_;
  GSourceOwned rest_;
  gint64 firstSave_ = 0;
  std::set<std::string> files_;
  std::set<std::string> fresh_;  // were not there before this change
};

/// Whether a name is one of those that editors and tools use for files of their own: swap and
/// backup files, locks, files that are still being written, core dumps.
bool isEditorsOwn(const std::string& name);

/// Whether the application in this folder may have written the file itself: one of its scripts has
/// `file.write`, and the file is neither a script nor one that MorvikVM reads at the start.
bool mayBeWritten(const std::filesystem::path& folder, const std::string& file);

}  // namespace morvik::devkit
