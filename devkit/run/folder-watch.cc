// inotify on the main loop, and a clock that waits for saving to come to rest.
#include "run/folder-watch.h"

#include <fnmatch.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

// A file is saved when its writer closes it, or when it is there under its name at once.
constexpr unsigned kSaves = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_CREATE | IN_DELETE;

// Names as shells match them.
constexpr const char* kEditorsOwn[] = {
    "*~",         ".*.sw?",    ".*.swpx",   "4913",        ".#*",
    "#*#",        "*.tmp",     "*.part",    "*___jb_*___", ".goutputstream-*",
    "*.kate-swp", "sed??????", ".DS_Store", "core",        "core.[0-9]*"};

// Folders in which nothing is an application's.
constexpr const char* kOthersFolders[] = {".git", ".hg", ".svn", ".idea", ".vscode"};

bool isOthersFolder(const std::string& name) {
  return std::find(std::begin(kOthersFolders), std::end(kOthersFolders), name) !=
         std::end(kOthersFolders);
}

bool isScript(const fs::path& file) { return file.extension() == ".js"; }

bool holdsFileWrite(const fs::path& script) {
  std::ifstream input(script, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(input), {}};
  return g_regex_match_simple(R"(\bfile\s*\.\s*write\b)", text.c_str(), G_REGEX_RAW,
                              G_REGEX_MATCH_DEFAULT) != FALSE;
}

// Everything in a folder and below that can be read. Calls `entry` for each, folders before what is
// in them; one that answers false for a folder keeps its contents out.
void walk(const fs::path& folder, const std::function<bool(const fs::directory_entry&)>& entry) {
  std::error_code error;
  fs::recursive_directory_iterator entries(folder, error);
  for (const auto end = fs::recursive_directory_iterator(); !error && entries != end;
       entries.increment(error)) {
    if (!entry(*entries)) entries.disable_recursion_pending();
  }
}

// A link, or a second name of a file: there at once, without anybody who closes it.
bool isLink(const fs::path& path) {
  std::error_code error;
  return fs::is_symlink(path, error) || fs::hard_link_count(path, error) > 1;
}

}  // namespace

bool isEditorsOwn(const std::string& name) {
  return std::any_of(std::begin(kEditorsOwn), std::end(kEditorsOwn), [&name](const char* pattern) {
    return fnmatch(pattern, name.c_str(), 0) == 0;
  });
}

bool mayBeWritten(const fs::path& folder, const std::string& file) {
  if (isScript(file) || file == "." || file == "descriptor.xml" || file == "config.bin")
    return false;
  bool writes = false;
  walk(folder, [&writes](const fs::directory_entry& entry) {
    writes = writes || (isScript(entry.path()) && holdsFileWrite(entry.path()));
    return !isOthersFolder(entry.path().filename());
  });
  return writes;
}

FolderWatch::~FolderWatch() {
  events_.reset();
  if (rest_) g_source_destroy(rest_.get());
  if (inotify_ >= 0) close(inotify_);
}

bool FolderWatch::start(std::string& trouble) {
  std::error_code error;
  folder_ = fs::canonical(folder_, error);
  inotify_ = error ? -1 : inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  trouble_ = error ? error.value() : inotify_ < 0 ? errno : 0;
  if (inotify_ >= 0) {
    watchParent();
    watchTree(folder_);
    events_ = whenReadable(inotify_, [this] {
      look();
      return true;
    });
  }
  if (trouble_ == 0) return true;
  trouble = trouble_ == ENOSPC
                ? "the system watches as many folders as it may (fs.inotify.max_user_watches)"
                : std::strerror(trouble_);
  return false;
}

// A folder that is gone by now is none to watch, and its parent tells when it is there again.
int FolderWatch::add(const fs::path& folder, unsigned what) {
  const int place = inotify_add_watch(inotify_, folder.c_str(), what | IN_ONLYDIR | IN_MASK_ADD);
  if (place < 0 && errno != ENOENT && errno != ENOTDIR) trouble_ = errno;
  return place;
}

void FolderWatch::watchOnly(const fs::path& folder, const std::string& name,
                            const std::string& nameHere) {
  const int place = add(folder, kSaves);
  if (place >= 0) places_.try_emplace(place, Place{folder}).first->second.names[name] = nameHere;
}

// The parent may be one that this user cannot read; then only its replacement stays unseen.
void FolderWatch::watchParent() {
  const int before = trouble_;
  if (folder_.has_relative_path()) watchOnly(folder_.parent_path(), folder_.filename(), ".");
  trouble_ = before;
}

void FolderWatch::watchTree(const fs::path& folder) {
  const int place = add(folder, kSaves);
  if (place < 0) return;
  auto& known = places_.try_emplace(place, Place{folder}).first->second;
  known.whole = true;
  known.path = folder;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.is_symlink(error)) {
      watchLink(entry.path());
    } else if (entry.is_directory(error) && !isOthersFolder(entry.path().filename())) {
      watchTree(entry.path());
    }
  }
}

// The kernel goes on watching a folder that was moved away.
void FolderWatch::forgetTree(const fs::path& folder) {
  std::erase_if(places_, [this, &folder](const auto& known) {
    const auto& [place, facts] = known;
    const auto apart =
        std::mismatch(folder.begin(), folder.end(), facts.path.begin(), facts.path.end());
    if (!facts.whole || apart.first != folder.end()) return false;
    inotify_rm_watch(inotify_, place);
    return true;
  });
}

// Who edits such a file saves it where it is.
void FolderWatch::watchLink(const fs::path& link) {
  std::error_code error;
  const fs::path target = fs::canonical(link, error);
  if (!error && fs::is_regular_file(target, error)) {
    watchOnly(target.parent_path(), target.filename(), nameHere(link));
  }
}

std::string FolderWatch::nameHere(const fs::path& path) const {
  return path.lexically_relative(folder_);
}

void FolderWatch::look() {
  alignas(inotify_event) std::array<char, std::size_t{16} * 1024> bytes{};
  const ssize_t count = read(inotify_, bytes.data(), bytes.size());
  for (ssize_t at = 0; at < count;) {
    const auto* event = reinterpret_cast<const inotify_event*>(bytes.data() + at);
    take(event->wd, event->mask, event->len > 0 ? event->name : "");
    at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
  }
}

// Of what was lost in an overflow nobody knows more than that there was something.
void FolderWatch::take(int place, unsigned what, const std::string& name) {
  if ((what & IN_Q_OVERFLOW) != 0) {
    watchTree(folder_);
    return note(".");
  }
  const auto found = places_.find(place);
  if (found == places_.end()) return;
  if ((what & IN_IGNORED) != 0) {
    places_.erase(found);
    return;
  }
  const Place known = found->second;
  if (known.whole) takeInFolder(known, what, name);
  const auto meant = known.names.find(name);
  if (meant == known.names.end()) return;
  if (meant->second == ".") {
    forgetTree(folder_);
    watchTree(folder_);
  }
  note(meant->second);
}

void FolderWatch::takeInFolder(const Place& place, unsigned what, const std::string& name) {
  const fs::path path = place.path / name;
  if (isEditorsOwn(name)) return;
  if ((what & IN_ISDIR) != 0) {
    if (isOthersFolder(name)) return;
    if ((what & IN_MOVED_FROM) != 0) forgetTree(path);
    if ((what & (IN_CREATE | IN_MOVED_TO)) != 0) watchTree(path);
  } else if ((what & IN_CREATE) != 0) {
    if (!files_.contains(nameHere(path))) fresh_.insert(nameHere(path));
    if (!isLink(path)) return;  // its writer has not closed it yet
    watchLink(path);
  }
  note(nameHere(path));
}

void FolderWatch::note(const std::string& file) {
  if (mayBeWritten(folder_, file)) return;
  const gint64 now = g_get_monotonic_time();
  if (files_.empty()) firstSave_ = now;
  files_.insert(file);
  const gint64 longest = firstSave_ + std::chrono::microseconds(kLongestChange).count();
  const gint64 rest = now + std::chrono::microseconds(kQuietAfterSave).count();
  if (rest_) g_source_destroy(rest_.get());
  rest_.reset(g_timeout_source_new(0));
  g_source_set_callback(rest_.get(), onRest, this, nullptr);
  g_source_set_ready_time(rest_.get(), std::min(rest, longest));
  g_source_attach(rest_.get(), g_main_context_get_thread_default());
}

// What came and went within the change was only there to write another file.
std::set<std::string> FolderWatch::takeChange() {
  std::set<std::string> files = std::exchange(files_, {});
  for (const std::string& name : std::exchange(fresh_, {})) {
    std::error_code error;
    if (!fs::exists(folder_ / name, error)) files.erase(name);
  }
  return files;
}

// Told last: whoever hears it may end the watch.
gboolean FolderWatch::onRest(gpointer watch) {
  auto* self = static_cast<FolderWatch*>(watch);
  const auto files = self->takeChange();
  if (!files.empty()) self->changed_(files);
  return G_SOURCE_REMOVE;
}

}  // namespace morvik::devkit
