// The page: shows a source to every browser that has it open, and brings back what they ask for.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/json.h"
#include "page/history.h"
#include "page/paced-call.h"
#include "page/page-requests.h"
#include "page/page-server.h"
#include "page/page-socket.h"
#include "page/page-source.h"
#include "page/tag-drawer.h"
#include "page/visitor.h"

namespace morvik::devkit {

/// A line of an application's log, or what its tool tells of it, as the page shows it; level and
/// kind in the words of docs/page-protocol.md.
struct PageLogLine {
  std::int64_t time = 0;  // milliseconds since 1970
  std::string app;
  std::string level;  // empty when it has none
  std::string kind;
  std::string text;

  /// Of all lines these are missed least, and there are many of them.
  bool isFaint() const { return level == "DEBUG" || kind == "noise"; }
};

/// Works on the thread-default main context of the one who makes it. All calls, and all calls to
/// its source, are in that one thread. However many pages are open and however slow they are,
/// nothing here waits for them or grows with what happens.
class Page : private PageSocket::Owner {
 public:
  static constexpr std::size_t kMostPages = 16;

  /// The source must outlive the page. Saved tags are kept in the state folder.
  Page(PageSource& source, const std::string& stateFolder);
  ~Page() override;
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  /// Listens on 127.0.0.1; see PageServer.
  [[nodiscard]] std::optional<PageServer::Failure> listen(std::uint16_t port, std::string& text) {
    return server_.listen(port, text);
  }
  /// The address that opens the page; valid after a successful `listen`.
  std::string address() const { return server_.address(); }
  /// How many have it open, or are about to leave.
  std::size_t pages() const { return guests_.size(); }

  /// Something of the view has changed. Pages get the whole view, soon and not too often.
  void viewChanged();
  /// The same for the applications.
  void applicationsChanged();
  /// Something happened. docs/device-json.md has the forms of events.
  void happened(const Json& event);
  void logged(const PageLogLine& line);

 private:
  struct Guest;
  class Desk;

  void welcome(SoupWebsocketConnection* connection);
  std::string greeting();
  void frameArrived(PageSocket::Number page, std::string_view text) override;
  void pageLeft(PageSocket::Number page) override;
  void showOut(Guest& guest);
  void owe(Visitor::Part part);
  void tellLog();
  void catchUp();
  void settle(Visitor& visitor, const Visitor::BodyOf& bodyOf) const;
  std::string bodyOf(Visitor::Part part) const;

  PageSource& source_;
  TagDrawer tags_;
  History events_;
  History log_;
  std::vector<std::string> freshLog_;  // lines that open pages were not told yet
  std::map<PageSocket::Number, std::unique_ptr<Guest>> guests_;
  PageSocket::Number lastNumber_ = 0;
  PacedCall soon_;
  PageServer server_;
};

}  // namespace morvik::devkit
