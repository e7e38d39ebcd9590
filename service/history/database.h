#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace fieldline::service {

// What SQLite could not do.
class DatabaseError : public std::runtime_error {
 public:
  DatabaseError(int code, const std::string& message) : std::runtime_error(message), code_(code) {}

  // Whether the file is no database, or damaged: nothing can be done with it any more.
  bool IsDamage() const;

 private:
  int code_;  // SQLite's
};

class Database;

// A prepared statement. Values are bound from 1 on and read from column 0 on, as SQLite counts.
class Statement {
 public:
  Statement(Database& database, std::string_view sql);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Binds all values from the first on. Texts are copied.
  template <typename... Values>
  Statement& Bind(const Values&... values) {
    int position = 0;
    (BindOne(++position, values), ...);
    return *this;
  }

  // Takes the next row; false after the last, when the statement can be bound and used again.
  bool Step();

  // All of a statement that returns no rows.
  void Run();

  // Ends a query whose rows were not all taken.
  void Reset();

  std::int64_t Integer(int column) const;
  double Number(int column) const;
  std::string Text(int column) const;  // or bytes
  bool IsNull(int column) const;
  bool IsText(int column) const;

 private:
  void BindOne(int position, std::int64_t value);
  void BindOne(int position, int value) { BindOne(position, static_cast<std::int64_t>(value)); }
  void BindOne(int position, double value);
  void BindOne(int position, std::string_view text);
  void BindOne(int position, const std::string& text) { BindOne(position, std::string_view{text}); }
  void BindOne(int position, std::span<const unsigned char> bytes);
  void BindOne(int position, std::nullptr_t);

  Database& database_;
  sqlite3_stmt* statement_ = nullptr;
};

// A connection to a SQLite file. One thread uses it at a time. Everything throws DatabaseError.
class Database {
 public:
  enum class Mode { kWrite, kRead };

  // kWrite makes the file if there is none, and writes ahead to a log; kRead changes nothing.
  Database(const std::string& path, Mode mode);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // One or more statements without values.
  void Run(const char* sql);

  std::int64_t LastRowId() const;

  // A number that a statement such as a PRAGMA returns.
  std::int64_t Query(std::string_view sql);

  [[noreturn]] void Throw(int code) const;

 private:
  friend class Statement;

  sqlite3* connection_ = nullptr;
};

// Ends with everything undone unless committed.
class Transaction {
 public:
  explicit Transaction(Database& database);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void Commit();

 private:
  Database& database_;
  bool is_open_ = true;
};

}  // namespace fieldline::service
