// Statements of SQLite, prepared, run and released.
#include "device/database.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

using Statement = std::unique_ptr<sqlite3_stmt, Release<sqlite3_finalize>>;

// Another device on the same file holds it for no longer than one change.
constexpr int kPatienceMs = 1000;

// The statement runs while the value lives, so that nothing is copied.
void bindValue(sqlite3_stmt* statement, int index, const Database::Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) {
    sqlite3_bind_text64(statement, index, text->data(), text->size(), nullptr, SQLITE_UTF8);
  } else {
    const std::string& bytes = std::get<Database::Blob>(value).bytes;
    sqlite3_bind_blob64(statement, index, bytes.data(), bytes.size(), nullptr);
  }
}

Database::Row rowOf(sqlite3_stmt* statement) {
  Database::Row row;
  for (int i = 0; i < sqlite3_column_count(statement); ++i) {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, i));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, i));
    row.emplace_back(bytes != nullptr ? bytes : "", bytes != nullptr ? size : 0);
  }
  return row;
}

}  // namespace

Database::Database() = default;

Database::~Database() = default;

void Database::Close::operator()(sqlite3* database) const { sqlite3_close(database); }

// Made here first, since SQLite would let everybody read it.
bool Database::open(const std::string& file) {
  const int made = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (made < 0) {
    trouble_ = std::strerror(errno);
    return false;
  }
  ::close(made);
  return openAs(file.c_str());
}

bool Database::openInMemory() { return openAs(":memory:"); }

bool Database::openAs(const char* name) {
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(name, &opened, SQLITE_OPEN_READWRITE, nullptr);
  database_.reset(opened);
  if (result != SQLITE_OK) {
    failed();
    return false;
  }
  sqlite3_busy_timeout(opened, kPatienceMs);
  return true;
}

std::optional<Database::Rows> Database::run(const char* sql, Values values) {
  sqlite3_stmt* prepared = nullptr;
  const int result = sqlite3_prepare_v2(database_.get(), sql, -1, &prepared, nullptr);
  const Statement statement(prepared);
  if (result != SQLITE_OK) return failed();
  int index = 0;
  for (const Value& value : values) bindValue(prepared, ++index, value);
  Rows rows;
  int step = SQLITE_ROW;
  while ((step = sqlite3_step(prepared)) == SQLITE_ROW) rows.push_back(rowOf(prepared));
  if (step != SQLITE_DONE) return failed();
  return rows;
}

bool Database::does(const char* sql, Values values) { return run(sql, values).has_value(); }

void Database::undo() { sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr); }

std::nullopt_t Database::failed() {
  trouble_ = sqlite3_errmsg(database_.get());
  return std::nullopt;
}

Transaction::~Transaction() {
  if (open_) database_.undo();
}

bool Transaction::commit() {
  open_ = !database_.does("COMMIT");
  return !open_;
}

}  // namespace morvik::devkit
