#include "support/odbc/Handles.h"

#include "support/odbc/Names.h"
#include "support/odbc/Statement.h"

#include <algorithm>
#include <cstring>

namespace testodbc {

namespace {

std::string Describe(const std::vector<Failure>& diagnostics) {
    std::string text;
    for (const Failure& record : diagnostics) {
        text += ' ' + record.state + ' ' + std::to_string(record.native) + ' ' + Quote(record.text);
    }
    return text;
}

SQLRETURN RunBody(Handle& handle, const Body& body, std::string& line) {
    try {
        return body(line);
    } catch (const Failure& failure) {
        handle.diagnostics.push_back(failure);
    } catch (const std::exception& error) {
        handle.diagnostics.push_back({"HY000", error.what()});
    }
    return SQL_ERROR;
}

SQLRETURN Attempt(const char* call, Handle& handle, const Body& body, std::string& line) {
    Control& control = Driver::Get().control;
    if (!control.GetSettings().fault.empty()) {
        handle.diagnostics.push_back({"HY000", control.GetSettings().fault});
        return SQL_ERROR;
    }
    const std::optional<Rule> rule = control.RuleFor(call);
    if (rule && rule->effect == Rule::Effect::answer) {
        return static_cast<SQLRETURN>(rule->answer);
    }
    if (rule && rule->effect == Rule::Effect::fail) {
        handle.diagnostics.push_back(rule->diagnostic);
        return SQL_ERROR;
    }
    const SQLRETURN result = RunBody(handle, body, line);
    if (rule && SQL_SUCCEEDED(result)) {
        handle.diagnostics.push_back(rule->diagnostic);
        return SQL_SUCCESS_WITH_INFO;
    }
    return result;
}

} // namespace

Handle::Handle(char letter) {
    std::set<std::string>& labels = Driver::Get().labels;
    for (int number = 1; m_label.empty(); ++number) {
        const auto [label, isNew] = labels.insert(letter + std::to_string(number));
        m_label = isNew ? *label : std::string();
    }
}

Handle::~Handle() {
    Driver::Get().labels.erase(m_label);
}

Driver& Driver::Get() {
    static auto* const driver = new Driver;
    return *driver;
}

Connection::Connection() : Handle('C') {}

Connection::~Connection() {
    EndTransaction(false);
}

void Connection::Connect(std::string source, std::string user) {
    m_source = std::move(source);
    m_user = std::move(user);
}

void Connection::Disconnect() {
    if (!m_transaction.before.empty()) {
        Fail("25000", "A transaction is still open.");
    }
    statements.clear();
    m_isAutocommit = true;
}

void Connection::SetAutocommit(bool isOn) {
    if (isOn && !m_isAutocommit) {
        EndTransaction(true);
    }
    m_isAutocommit = isOn;
}

void Connection::EndTransaction(bool commits) {
    Store& store = Driver::Get().store;
    if (commits) {
        store.Commit(m_transaction);
    } else {
        store.Rollback(m_transaction);
    }
    for (auto& [handle, statement] : statements) {
        statement->Close();
    }
}

Result Connection::Execute(const Query& query, const std::vector<Value>& parameters) {
    Driver& driver = Driver::Get();
    Result result = driver.store.Execute(query, parameters, driver.control.Types(), m_transaction);
    if (m_isAutocommit) {
        driver.store.Commit(m_transaction);
    }
    return result;
}

std::string Connection::DatabaseName() const {
    const std::string& scripted = Driver::Get().control.GetSettings().database;
    return scripted.empty() ? m_source : scripted;
}

SQLRETURN Perform(const char* call, Handle& handle, const std::string& arguments, const Body& body) {
    Driver& driver = Driver::Get();
    const std::lock_guard lock(driver.guard);
    if (driver.control.Refresh()) {
        driver.store.Clear();
    }
    driver.details.clear();
    handle.diagnostics.clear();
    std::string line = std::string(call) + ' ' + handle.Label() + arguments;
    const SQLRETURN result = Attempt(call, handle, body, line);
    driver.control.Record(line + " = " + NameOfResult(result) + Describe(handle.diagnostics));
    for (const std::string& detail : driver.details) {
        driver.control.Record(detail);
    }
    return result;
}

std::string TextFrom(const SQLWCHAR* text, SQLINTEGER length) {
    if (text == nullptr) {
        return {};
    }
    std::u16string units;
    for (SQLINTEGER i = 0; length == SQL_NTS ? text[i] != 0 : i < length; ++i) {
        units += static_cast<char16_t>(text[i]);
    }
    return Utf8FromUtf16(units);
}

std::string QuoteArgument(const SQLWCHAR* text, SQLINTEGER length) {
    return text == nullptr ? " NULL" : ' ' + Quote(TextFrom(text, length));
}

bool PutText(const std::string& text, SQLWCHAR* out, SQLLEN room, SQLSMALLINT* length) {
    const std::u16string units = Utf16FromUtf8(text);
    if (length != nullptr) {
        *length = static_cast<SQLSMALLINT>(units.size());
    }
    if (out == nullptr) {
        return true;
    }
    if (room > 0) {
        const std::size_t count = std::min(units.size(), static_cast<std::size_t>(room) - 1);
        std::memcpy(out, units.data(), count * sizeof(SQLWCHAR));
        out[count] = 0;
    }
    return static_cast<SQLLEN>(units.size()) < room;
}

SQLRETURN ResultOf(Handle& handle, bool isWhole) {
    if (!isWhole) {
        handle.diagnostics.push_back({"01004", "String data, right truncated"});
    }
    return isWhole ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

} // namespace testodbc
