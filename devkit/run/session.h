// Several applications on one device: which of them a connection belongs to, and everything that is
// said and done, told in one place.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "run/link-folder.h"
#include "run/running-app.h"
#include "run/session-device.h"

namespace morvik::devkit {

/// The device runs so many at once.
inline constexpr std::size_t kMostApplications = 3;

struct SessionPlan {
  std::vector<std::filesystem::path> folders;
  /// The third words of the launch lines, in the order of the folders; "DEVICE" stands for the
  /// device's address in them, and alone where there are fewer of them.
  std::vector<std::string> instances = {};
  std::string host;  ///< the path of morvikvm
  FolderCheck check = checkFolder;
  std::vector<std::string> environment = {};  ///< of the launchers: "NAME=value"
  /// Further options for each folder's host, in the order of the folders.
  std::vector<std::vector<std::string>> hostArguments = {};
};

/// Works on the thread-default main context.
class Session {
 public:
  /// Observer and device must outlive the session.
  Session(RunningAppObserver& observer, const SessionDevice& device);
  /// Ends all applications and waits for them; removes their links.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Links the folders. False when one cannot be run at all, with the reason in `trouble`. Called
  /// once.
  [[nodiscard]] bool prepare(const SessionPlan& plan, std::string& trouble);
  /// Launches all applications and watches their folders.
  void start();
  /// Launches them, each by its launch type in this list; one without a type there waits for
  /// RunningApp::launch. Saves are not seen.
  void start(const std::vector<std::optional<std::string>>& types);

  const std::vector<std::unique_ptr<RunningApp>>& apps() const { return apps_; }
  /// Their folders by their names.
  AppFolders folders() const;
  /// Null when there is none of this name.
  RunningApp* app(const std::string& name) const;

  /// The application that has this number at the device, null when that is none of the session or
  /// not known. Learned from the connection, which must stand when it is asked for the first time.
  RunningApp* appOf(AppNumber number);
  /// The number that an application has at the device since its last launch; 0 before it connects.
  AppNumber numberOf(const RunningApp& app) const;
  /// All of them in lines for a reader: name, state and its number at the device.
  std::string inWords() const;
  /// What happens at the device, for what is known of its applications.
  void hear(const Event& event);

 private:
  void add(RunningAppPlan plan);
  std::string withAddress(std::string instance) const;
  void lost(const Trouble& trouble);
  void dropped(std::optional<AppNumber> only);

  RunningAppObserver& observer_;
  const SessionDevice& device_;
  std::unique_ptr<LinkFolder> links_;
  std::vector<std::unique_ptr<RunningApp>> apps_;
  std::map<AppNumber, RunningApp*> owners_;
};

/// An application's name to begin with: its folder's, as a launch line can carry it.
std::string shownNameOf(const std::filesystem::path& folder);

}  // namespace morvik::devkit
