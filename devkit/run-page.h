// A session as the page shows it.
#pragma once

#include <cstdint>
#include <string>

#include "page/page.h"
#include "run/session.h"
#include "terminal/merged-view.h"

namespace morvik::devkit {

/// Works on the thread-default main context.
class RunPage : private PageSource {
 public:
  /// Session and device must outlive the page. Saved tags are kept in the state folder.
  RunPage(Session& session, SessionDevice& device, const std::string& stateFolder);

  /// Listens on 127.0.0.1; 0 takes any free port. False when it cannot, with the reason in
  /// `trouble`.
  [[nodiscard]] bool listen(std::uint16_t port, std::string& trouble);
  /// Valid after a successful `listen`.
  std::string address() const { return page_.address(); }

  /// To be told before the session hears of it: then the name of an application that leaves is
  /// still known.
  void happened(const Event& event);
  /// A line of an application, and a row that RunLog tells of one.
  void wrote(const RunningApp& app, const LogLine& line);
  void told(const std::string& app, const std::string& mark, const std::string& text, RowLook look);
  void applicationsChanged() { page_.applicationsChanged(); }

 private:
  std::string title() const override;
  std::string mode() const override;
  std::int64_t now() const override;
  Json view() const override;
  Json stimuli() const override;
  Json applications() const override;
  Outcome stimulate(const std::string& name, const Json& arguments,
                    std::optional<unsigned> app) override;
  Outcome act(const PageAct& act) override;

  Json jsonOf(const Event& event) const;

  Session& session_;
  SessionDevice& device_;
  Page page_;
};

}  // namespace morvik::devkit
