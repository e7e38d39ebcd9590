#include "service/history/database.h"

#include <sqlite3.h>

namespace fieldline::service {
namespace {

constexpr int kBusyTime = 5000;  // ms to wait for another connection

}  // namespace

bool DatabaseError::IsDamage() const {
  const int primary = code_ & 0xFF;
  return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

Statement::Statement(Database& database, std::string_view sql) : database_(database) {
  const int result =
      sqlite3_prepare_v2(database.connection_, sql.data(), static_cast<int>(sql.size()), &statement_, nullptr);
  if (result != SQLITE_OK) database.Throw(result);
}

Statement::~Statement() { sqlite3_finalize(statement_); }

bool Statement::Step() {
  const int result = sqlite3_step(statement_);
  if (result == SQLITE_ROW) return true;
  Reset();
  if (result != SQLITE_DONE) database_.Throw(result);
  return false;
}

void Statement::Run() {
  while (Step()) {
  }
}

void Statement::Reset() { sqlite3_reset(statement_); }

std::int64_t Statement::Integer(int column) const { return sqlite3_column_int64(statement_, column); }

double Statement::Number(int column) const { return sqlite3_column_double(statement_, column); }

std::string Statement::Text(int column) const {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  const int size = sqlite3_column_bytes(statement_, column);
  return text == nullptr ? std::string() : std::string(text, static_cast<std::size_t>(size));
}

bool Statement::IsNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }

bool Statement::IsText(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_TEXT; }

void Statement::BindOne(int position, std::int64_t value) {
  if (const int result = sqlite3_bind_int64(statement_, position, value)) database_.Throw(result);
}

void Statement::BindOne(int position, double value) {
  if (const int result = sqlite3_bind_double(statement_, position, value)) database_.Throw(result);
}

void Statement::BindOne(int position, std::string_view text) {
  const char* const data = text.data() != nullptr ? text.data() : "";  // SQLite takes null for no value
  const int result = sqlite3_bind_text(statement_, position, data, static_cast<int>(text.size()), SQLITE_TRANSIENT);
  if (result != SQLITE_OK) database_.Throw(result);
}

void Statement::BindOne(int position, std::span<const unsigned char> bytes) {
  const int size = static_cast<int>(bytes.size());
  if (const int result = sqlite3_bind_blob(statement_, position, bytes.data(), size, SQLITE_TRANSIENT)) {
    database_.Throw(result);
  }
}

void Statement::BindOne(int position, std::nullptr_t) {
  if (const int result = sqlite3_bind_null(statement_, position)) database_.Throw(result);
}

Database::Database(const std::string& path, Mode mode) {
  const int flags = mode == Mode::kWrite ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY;
  const int result = sqlite3_open_v2(path.c_str(), &connection_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  try {
    if (result != SQLITE_OK) Throw(result);
    sqlite3_extended_result_codes(connection_, 1);
    sqlite3_busy_timeout(connection_, kBusyTime);
    if (mode == Mode::kWrite) {
      // A commit survives the end of the process; a power failure may take the last of them, and damages nothing.
      Run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON");
    } else {
      // Each thread of the web server keeps what its last request took: SQLite's usual 2 MB would be 30 MB of them.
      Run("PRAGMA cache_size = -256");
    }
  } catch (...) {
    sqlite3_close(connection_);
    throw;
  }
}

Database::~Database() { sqlite3_close(connection_); }

void Database::Run(const char* sql) {
  if (const int result = sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr)) Throw(result);
}

std::int64_t Database::LastRowId() const { return sqlite3_last_insert_rowid(connection_); }

std::int64_t Database::Query(std::string_view sql) {
  Statement statement(*this, sql);
  return statement.Step() ? statement.Integer(0) : 0;
}

void Database::Throw(int code) const {
  throw DatabaseError(code, connection_ != nullptr ? sqlite3_errmsg(connection_) : sqlite3_errstr(code));
}

Transaction::Transaction(Database& database) : database_(database) { database_.Run("BEGIN IMMEDIATE"); }

Transaction::~Transaction() {
  if (!is_open_) return;
  try {
    database_.Run("ROLLBACK");
  } catch (const DatabaseError&) {
    // SQLite has rolled back by itself, as it does when the disk is full.
  }
}

void Transaction::Commit() {
  database_.Run("COMMIT");
  is_open_ = false;
}

}  // namespace fieldline::service
