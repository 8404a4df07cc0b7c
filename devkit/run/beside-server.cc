// The plan from JSON, and answers made of it.
#include "run/beside-server.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include <nlohmann/json.hpp>

#include "device/json.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;
using GUriOwned = std::unique_ptr<GUri, Release<g_uri_unref>>;
using GBytesOwned = std::unique_ptr<GBytes, Release<g_bytes_unref>>;
using Multipart = std::unique_ptr<SoupMultipart, Release<soup_multipart_free>>;

constexpr char kPlanFile[] = "beside.json";

std::string textOf(const fs::path& file) {
  std::ifstream input(file, std::ios::binary);
  if (!input) throw std::runtime_error(file.filename().string() + " cannot be read");
  return {std::istreambuf_iterator<char>(input), {}};
}

// The body stands in the plan itself, as text or as JSON, or in a file of the folder.
std::string bodyOf(const Json& row, const fs::path& folder) {
  if (row.contains("file")) return textOf(folder / row.at("file").get<std::string>());
  const Json& body = row.at("body");
  return body.is_string() ? body.get<std::string>() : body.dump(2);
}

BesideAnswer answerOf(const Json& row, const fs::path& folder) {
  const bool isJson = row.contains("body") && !row.at("body").is_string();
  return {.path = row.at("path").get<std::string>(),
          .status = row.value("status", 200U),
          .type = row.value("type", isJson ? "application/json" : "text/plain"),
          .body = bodyOf(row, folder),
          .needs = row.value("needs", std::vector<std::string>{})};
}

const char* headerOf(SoupServerMessage* message, const std::string& name) {
  return soup_message_headers_get_list(soup_server_message_get_request_headers(message),
                                       name.c_str());
}

// "photo = picture.svg, 310 bytes of image/svg+xml"
std::string describePart(SoupMessageHeaders* headers, GBytes* bytes) {
  char* kind = nullptr;
  GHashTable* parameters = nullptr;
  if (soup_message_headers_get_content_disposition(headers, &kind, &parameters) == FALSE) {
    return "a part without a name";
  }
  const GText ownedKind(kind);
  const std::unique_ptr<GHashTable, Release<g_hash_table_unref>> owned(parameters);
  const auto* name = static_cast<const char*>(g_hash_table_lookup(parameters, "name"));
  const auto* file = static_cast<const char*>(g_hash_table_lookup(parameters, "filename"));
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
  const std::string words = std::string(name != nullptr ? name : "?") + " = ";
  if (file == nullptr) return words + (size > 0 ? std::string(data, size) : "");
  const char* type = soup_message_headers_get_content_type(headers, nullptr);
  return words + file + ", " + std::to_string(size) + " bytes of " +
         (type != nullptr ? type : "any type");
}

// A line for each part; the body as it came when it is no form of parts.
std::string describeForm(SoupServerMessage* message) {
  const GBytesOwned body(soup_message_body_flatten(soup_server_message_get_request_body(message)));
  const Multipart form(soup_multipart_new_from_message(
      soup_server_message_get_request_headers(message), body.get()));
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(body.get(), &size));
  if (!form) return size > 0 ? std::string(data, size) : "";
  std::string words;
  for (int part = 0; part < soup_multipart_get_length(form.get()); ++part) {
    SoupMessageHeaders* headers = nullptr;
    GBytes* bytes = nullptr;
    soup_multipart_get_part(form.get(), part, &headers, &bytes);
    words += (words.empty() ? "" : "\n") + describePart(headers, bytes);
  }
  return words;
}

std::string valueOf(const std::string& name, SoupServerMessage* message) {
  constexpr std::string_view kHeader = "header:";
  if (name == "form") return describeForm(message);
  if (!name.starts_with(kHeader)) return "${" + name + "}";
  const char* value = headerOf(message, name.substr(kHeader.size()));
  return value != nullptr ? value : "";
}

// The body with what came in, in the places that ask for it.
std::string filledIn(const std::string& body, SoupServerMessage* message) {
  std::string text;
  std::size_t at = 0;
  for (std::size_t open = body.find("${"); open != std::string::npos; open = body.find("${", at)) {
    const std::size_t close = body.find('}', open);
    if (close == std::string::npos) break;
    text += body.substr(at, open - at) + valueOf(body.substr(open + 2, close - open - 2), message);
    at = close + 1;
  }
  return text + body.substr(at);
}

void respond(SoupServerMessage* message, unsigned status, const std::string& type,
             const std::string& body) {
  soup_server_message_set_status(message, status, nullptr);
  soup_server_message_set_response(message, type.c_str(), SOUP_MEMORY_COPY, body.data(),
                                   body.size());
}

}  // namespace

bool wantsBesideServer(const fs::path& folder) {
  std::error_code ignored;
  return fs::exists(folder / kPlanFile, ignored);
}

bool readBesidePlan(const fs::path& folder, BesidePlan& plan, std::string& trouble) {
  try {
    const Json file = Json::parse(textOf(folder / kPlanFile));
    plan.address = file.at("address").get<std::string>();
    for (const Json& row : file.at("answers")) plan.answers.push_back(answerOf(row, folder));
    if (plan.address.starts_with('/') && plan.address.find_first_of(" \r\n") == std::string::npos) {
      return true;
    }
    trouble = "\"address\" is a path that begins with / and has no blanks";
  } catch (const std::exception& wrong) {
    trouble = wrong.what();
  }
  return false;
}

BesideServer::BesideServer(BesidePlan plan, Heard heard)
    : plan_(std::move(plan)),
      heard_(std::move(heard)),
      server_(soup_server_new("server-header", "morvik-dev", nullptr)) {
  soup_server_add_handler(server_.get(), nullptr, onRequest, this, nullptr);
}

BesideServer::~BesideServer() { soup_server_disconnect(server_.get()); }

bool BesideServer::start(std::string& trouble) {
  GErrorOwned error;
  if (soup_server_listen_local(server_.get(), 0, SOUP_SERVER_LISTEN_IPV4_ONLY, error.out()) ==
      FALSE) {
    trouble = error.text();
    return false;
  }
  GSList* addresses = soup_server_get_uris(server_.get());
  const int port = g_uri_get_port(static_cast<GUri*>(addresses->data));
  g_slist_free_full(addresses, [](gpointer address) { g_uri_unref(static_cast<GUri*>(address)); });
  address_ = "http://127.0.0.1:" + std::to_string(port) + plan_.address;
  return true;
}

void BesideServer::onRequest(SoupServer* /*server*/, SoupServerMessage* message, const char* path,
                             GHashTable* /*query*/, gpointer self) {
  const auto* server = static_cast<BesideServer*>(self);
  server->answer(message, path);
  server->heard_(std::string(soup_server_message_get_method(message)) + " " + path + ": " +
                 std::to_string(soup_server_message_get_status(message)));
}

void BesideServer::answer(SoupServerMessage* message, const std::string& path) const {
  const auto row =
      std::find_if(plan_.answers.begin(), plan_.answers.end(),
                   [&path](const BesideAnswer& answer) { return answer.path == path; });
  if (row == plan_.answers.end()) {
    return respond(message, SOUP_STATUS_NOT_FOUND, "text/plain", "there is nothing at " + path);
  }
  for (const std::string& name : row->needs) {
    if (headerOf(message, name) != nullptr) continue;
    return respond(message, SOUP_STATUS_UNAUTHORIZED, "text/plain",
                   "the request has no header " + name);
  }
  respond(message, row->status, row->type, filledIn(row->body, message));
}

}  // namespace morvik::devkit
