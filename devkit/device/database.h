// One SQLite database, for those who speak SQL.
#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

struct sqlite3;

namespace morvik::devkit {

class Database {
 public:
  struct Blob {
    std::string bytes;
  };
  using Value = std::variant<std::string, Blob>;
  using Values = std::initializer_list<Value>;
  using Row = std::vector<std::string>;
  using Rows = std::vector<Row>;

  /// Does not open anything yet.
  Database();
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// The file is made when it is not there, readable for its owner only. Called once.
  [[nodiscard]] bool open(const std::string& file);
  [[nodiscard]] bool openInMemory();

  /// Runs one statement. The columns of its rows as bytes; nothing when it fails, `trouble` then
  /// tells why.
  [[nodiscard]] std::optional<Rows> run(const char* sql, Values values = {});
  /// The same for a statement without rows.
  [[nodiscard]] bool does(const char* sql, Values values = {});

  /// Takes back what an unfinished transaction has done. Leaves `trouble` as it is.
  void undo();

  /// Why the last operation that failed did so.
  const std::string& trouble() const { return trouble_; }

 private:
  struct Close {
    void operator()(sqlite3* database) const;
  };

  bool openAs(const char* name);
  std::nullopt_t failed();

  std::unique_ptr<sqlite3, Close> database_;
  std::string trouble_;
};

/// What is done between its making and its commit happens as a whole or not at all.
class Transaction {
 public:
  explicit Transaction(Database& database)
      : database_(database), open_(database.does("BEGIN IMMEDIATE")) {}
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  [[nodiscard]] bool begun() const { return open_; }
  [[nodiscard]] bool commit();

 private:
  Database& database_;
  bool open_;
};

}  // namespace morvik::devkit
