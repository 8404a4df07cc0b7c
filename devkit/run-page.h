// A session as the page shows it.
#pragma once

#include <cstdint>
#include <string>

#include "page/page.h"
#include "run/session.h"

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

  void happened(const Event& event);
  void wrote(const RunningApp& app, const LogLine& line);
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

  Session& session_;
  SessionDevice& device_;
  Page page_;
};

}  // namespace morvik::devkit
