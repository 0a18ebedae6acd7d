#include "support/odbc/Sql.h"

#include <cctype>

namespace testodbc {

namespace {

struct Token {
    enum class Kind { end, word, quotedName, number, text, symbol };
    Kind kind = Kind::end;
    std::string text;
};

bool IsWordPart(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

class Tokenizer {
public:
    explicit Tokenizer(std::string_view sql) : m_sql(sql) {}

    Token Next() {
        while (m_at < m_sql.size() && std::isspace(static_cast<unsigned char>(m_sql[m_at])) != 0) {
            ++m_at;
        }
        if (m_at == m_sql.size()) {
            return {};
        }
        const char c = m_sql[m_at];
        if (c == '[') {
            return {Token::Kind::quotedName, TakeQuoted(']')};
        }
        if (c == '\'') {
            return {Token::Kind::text, TakeQuoted('\'')};
        }
        if (IsDigit(c) || (c == '-' && m_at + 1 < m_sql.size() && IsDigit(m_sql[m_at + 1]))) {
            ++m_at;
            return {Token::Kind::number, c + TakeWhile([](char d) { return IsDigit(d) || d == '.'; })};
        }
        if (IsWordPart(c)) {
            return {Token::Kind::word, TakeWhile(IsWordPart)};
        }
        ++m_at;
        return {Token::Kind::symbol, std::string(1, c)};
    }

private:
    template <typename Test>
    std::string TakeWhile(Test belongs) {
        const std::size_t first = m_at;
        while (m_at < m_sql.size() && belongs(m_sql[m_at])) {
            ++m_at;
        }
        return std::string(m_sql.substr(first, m_at - first));
    }

    /// What stands between the quotes; the closing one, doubled, stands for itself.
    std::string TakeQuoted(char close) {
        std::string text;
        for (++m_at; m_at < m_sql.size(); ++m_at) {
            if (m_sql[m_at] == close) {
                ++m_at;
                if (m_at == m_sql.size() || m_sql[m_at] != close) {
                    return text;
                }
            }
            text += m_sql[m_at];
        }
        Fail("42000", "a quote isn't closed");
    }

    std::string_view m_sql;
    std::size_t m_at = 0;
};

/// Made in place: of a value that is moved the compiler fears, with the sanitizers, that it is not
/// initialised.
template <typename T>
Operand Literal(T value) {
    return Operand(std::in_place_type<Value>, std::move(value));
}

class Parser {
public:
    Parser(std::string_view sql, Flavour flavour) : m_flavour(flavour) {
        Tokenizer tokenizer(sql);
        do {
            m_tokens.push_back(tokenizer.Next());
        } while (m_tokens.back().kind != Token::Kind::end);
    }

    Query ParseQuery() {
        Query query;
        query.body = ParseBody();
        TakeIfSymbol(';');
        if (Peek().kind != Token::Kind::end) {
            Refuse();
        }
        query.markers = m_markers;
        return query;
    }

private:
    decltype(Query::body) ParseBody() {
        if (TakeIf("CREATE")) {
            if (TakeIf("TABLE")) {
                return ParseCreateTable();
            }
            return ParseCreateIndex();
        }
        if (TakeIf("ALTER")) {
            return ParseAddColumns();
        }
        if (TakeIf("INSERT")) {
            return ParseInsert();
        }
        if (TakeIf("UPDATE")) {
            return ParseUpdate();
        }
        if (TakeIf("SELECT")) {
            return ParseSelect();
        }
        if (TakeIf("DELETE")) {
            Take("FROM");
            Delete query{TakeTable(), {}};
            query.where = ParseWhere();
            return query;
        }
        Take("DROP");
        Take("TABLE");
        return DropTable{TakeTable()};
    }

    CreateTable ParseCreateTable() {
        CreateTable query{TakeTable(), {}};
        TakeSymbol('(');
        do {
            query.columns.push_back(ParseColumn());
        } while (TakeIfSymbol(','));
        TakeSymbol(')');
        return query;
    }

    ColumnDefinition ParseColumn() {
        ColumnDefinition column{TakeName(), TakeName()};
        if (TakeIf("PRIMARY")) {
            Take("KEY");
            column.isPrimaryKey = true;
            column.isRequired = true;
        } else if (TakeIf("NOT")) {
            Take("NULL");
            column.isRequired = true;
        } else {
            TakeIf("NULL");
        }
        return column;
    }

    CreateIndex ParseCreateIndex() {
        Take("UNIQUE");
        if (TakeIf("NONCLUSTERED")) {
            RefuseInAccess();
        }
        Take("INDEX");
        CreateIndex query{TakeName(), {}, {}};
        Take("ON");
        query.table = TakeTable();
        TakeSymbol('(');
        do {
            query.columns.push_back(TakeName());
            TakeIf("ASC");
        } while (TakeIfSymbol(','));
        TakeSymbol(')');
        if (TakeIf("ON")) {
            RefuseInAccess();
            Take("PRIMARY");
        }
        return query;
    }

    AddColumns ParseAddColumns() {
        Take("TABLE");
        AddColumns query{TakeTable(), {}};
        Take("ADD");
        do {
            query.columns.push_back(ParseColumn());
        } while (TakeIfSymbol(','));
        return query;
    }

    Insert ParseInsert() {
        Take("INTO");
        Insert query{TakeTable(), {}, {}};
        SkipHint("ROWLOCK");
        TakeSymbol('(');
        query.columns = ParseNames();
        TakeSymbol(')');
        Take("VALUES");
        TakeSymbol('(');
        do {
            query.values.push_back(TakeOperand());
        } while (TakeIfSymbol(','));
        TakeSymbol(')');
        if (query.values.size() != query.columns.size()) {
            Fail("21S01", "not as many values as columns");
        }
        return query;
    }

    Update ParseUpdate() {
        Update query{TakeTable(), {}, {}};
        SkipHint("ROWLOCK");
        Take("SET");
        do {
            std::string name = TakeName();
            TakeSymbol('=');
            query.changes.emplace_back(std::move(name), TakeOperand());
        } while (TakeIfSymbol(','));
        query.where = ParseWhere();
        return query;
    }

    Select ParseSelect() {
        Select query;
        if (TakeIf("COUNT")) {
            query.isCount = true;
            TakeSymbol('(');
            query.columns = ParseNames();
            TakeSymbol(')');
        } else if (!TakeIfSymbol('*')) {
            query.columns = ParseNames();
        }
        Take("FROM");
        query.table = TakeTable();
        SkipHint("NOLOCK");
        query.where = ParseWhere();
        if (TakeIf("ORDER")) {
            Take("BY");
            query.orderBy = TakeName();
        }
        return query;
    }

    Condition ParseWhere() {
        Condition condition;
        if (TakeIf("WHERE")) {
            do {
                condition.push_back(ParseComparison());
            } while (TakeIf("AND"));
        }
        return condition;
    }

    Comparison ParseComparison() {
        if (TakeIfSymbol('(')) {
            Comparison inner = ParseComparison();
            TakeSymbol(')');
            return inner;
        }
        Comparison comparison;
        comparison.column = TakeName();
        if (TakeIf("NOT")) {
            Take("IN");
            TakeSymbol('(');
            Take("SELECT");
            comparison.kind = Comparison::Kind::notIn;
            comparison.others = std::make_shared<Select>(ParseSelect());
            TakeSymbol(')');
            return comparison;
        }
        if (TakeIf("LIKE")) {
            comparison.kind = Comparison::Kind::like;
        } else {
            TakeSymbol('=');
        }
        comparison.value = TakeOperand();
        return comparison;
    }

    std::vector<std::string> ParseNames() {
        std::vector<std::string> names;
        do {
            names.push_back(TakeName());
        } while (TakeIfSymbol(','));
        return names;
    }

    /// WITH (HINT), if it is there
    void SkipHint(std::string_view hint) {
        if (TakeIf("WITH")) {
            RefuseInAccess();
            TakeSymbol('(');
            Take(hint);
            TakeSymbol(')');
        }
    }

    std::string TakeTable() {
        std::string name = TakeName();
        if (TakeIfSymbol('.')) {
            RefuseInAccess();
            if (!IsSameName(name, "dbo")) {
                Refuse();
            }
            name = TakeName();
        }
        return name;
    }

    Operand TakeOperand() {
        const Token token = Peek();
        ++m_at;
        if (token.kind == Token::Kind::text) {
            return Literal(Utf16FromUtf8(token.text));
        }
        if (token.kind == Token::Kind::number && token.text.find('.') != std::string::npos) {
            return Literal(std::stod(token.text));
        }
        if (token.kind == Token::Kind::number) {
            return Literal(std::int64_t{std::stoll(token.text)});
        }
        if (token.kind == Token::Kind::symbol && token.text == "?") {
            return Marker{++m_markers};
        }
        if (token.kind == Token::Kind::word && IsSameName(token.text, "NULL")) {
            return Literal(Null());
        }
        --m_at;
        Refuse();
    }

    std::string TakeName() {
        if (Peek().kind != Token::Kind::word && Peek().kind != Token::Kind::quotedName) {
            Refuse();
        }
        return m_tokens[m_at++].text;
    }

    /// A word of the language; [PRIMARY] is one too.
    bool TakeIf(std::string_view word) {
        const bool isThere = (Peek().kind == Token::Kind::word || Peek().kind == Token::Kind::quotedName) &&
                             IsSameName(Peek().text, word);
        m_at += isThere ? 1 : 0;
        return isThere;
    }

    bool TakeIfSymbol(char symbol) {
        const bool isThere = Peek().kind == Token::Kind::symbol && Peek().text[0] == symbol;
        m_at += isThere ? 1 : 0;
        return isThere;
    }

    void Take(std::string_view word) {
        if (!TakeIf(word)) {
            Refuse();
        }
    }

    void TakeSymbol(char symbol) {
        if (!TakeIfSymbol(symbol)) {
            Refuse();
        }
    }

    const Token& Peek() const { return m_tokens[m_at]; }

    void RefuseInAccess() const {
        if (m_flavour == Flavour::access) {
            Refuse();
        }
    }

    [[noreturn]] void Refuse() const {
        Fail("42000", "Syntax error in the statement near '" + Peek().text + "'.");
    }

    Flavour m_flavour;
    std::vector<Token> m_tokens;
    std::size_t m_at = 0;
    int m_markers = 0;
};

} // namespace

Query Parse(std::string_view sql, Flavour flavour) {
    return Parser(sql, flavour).ParseQuery();
}

} // namespace testodbc
