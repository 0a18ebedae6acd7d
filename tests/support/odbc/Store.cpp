#include "support/odbc/Store.h"

#include <algorithm>

namespace testodbc {

namespace {

std::size_t PositionOf(const Table& table, const std::string& column) {
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        if (IsSameName(table.columns[i].name, column)) {
            return i;
        }
    }
    Fail("42S22", "Column '" + column + "' is not in table '" + table.name + "'.");
}

std::vector<std::size_t> PositionsOf(const Table& table, const std::vector<std::string>& columns) {
    std::vector<std::size_t> positions(columns.size());
    std::transform(columns.begin(), columns.end(), positions.begin(),
                   [&](const std::string& column) { return PositionOf(table, column); });
    return positions;
}

bool HasColumn(const Table& table, const std::string& name) {
    return std::any_of(table.columns.begin(), table.columns.end(),
                       [&](const Column& column) { return IsSameName(column.name, name); });
}

bool HasSameKey(const Index& index, const Row& a, const Row& b) {
    return std::all_of(index.columns.begin(), index.columns.end(),
                       [&](std::size_t i) { return AreEqual(a[i], b[i]); });
}

Result Affected(long count) {
    return {false, 0, {}, count};
}

/// That the row at a position may stand beside those before it.
void CheckRow(const Table& table, std::size_t position) {
    const Row& row = table.rows[position];
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (table.columns[i].isRequired && std::holds_alternative<Null>(row[i])) {
            Fail("23000", "Column '" + table.columns[i].name + "' does not allow nulls.");
        }
    }
    for (const Index& index : table.uniqueIndexes) {
        for (std::size_t other = 0; other < position; ++other) {
            if (HasSameKey(index, table.rows[other], row)) {
                Fail("23000", "Duplicate key in table '" + table.name + "'.");
            }
        }
    }
}

} // namespace

/// One statement at work; a member of its own for each kind.
class Executor {
public:
    Executor(Store& store, const std::vector<Value>& parameters, const std::vector<TypeRow>& types,
             Transaction& transaction)
        : m_store(store), m_parameters(parameters), m_types(types), m_transaction(transaction) {}

    Result operator()(const CreateTable& query) {
        const std::string key = Lower(query.table);
        if (m_store.m_tables.count(key) != 0) {
            Fail("42S01", "Table '" + query.table + "' already exists.");
        }
        Table table{query.table, {}, {}, {}};
        for (const ColumnDefinition& column : query.columns) {
            if (column.isPrimaryKey) {
                table.uniqueIndexes.push_back({{}, {table.columns.size()}});
            }
            AddColumn(table, column);
        }
        m_store.Remember(query.table, m_transaction);
        m_store.m_tables[key] = std::move(table);
        return {};
    }

    Result operator()(const CreateIndex& query) {
        Table changed = m_store.Existing(query.table);
        for (const Index& index : changed.uniqueIndexes) {
            if (IsSameName(index.name, query.name)) {
                Fail("42S11", "Index '" + query.name + "' already exists on table '" + query.table + "'.");
            }
        }
        changed.uniqueIndexes.push_back({query.name, PositionsOf(changed, query.columns)});
        for (std::size_t i = 0; i < changed.rows.size(); ++i) {
            CheckRow(changed, i);
        }
        Replace(std::move(changed));
        return {};
    }

    Result operator()(const AddColumns& query) {
        Table changed = m_store.Existing(query.table);
        for (const ColumnDefinition& column : query.columns) {
            AddColumn(changed, column);
        }
        for (Row& row : changed.rows) {
            row.resize(changed.columns.size());
        }
        Replace(std::move(changed));
        return {};
    }

    Result operator()(const Insert& query) {
        Table changed = m_store.Existing(query.table);
        const std::vector<std::size_t> positions = PositionsOf(changed, query.columns);
        Row row(changed.columns.size());
        for (std::size_t i = 0; i < positions.size(); ++i) {
            Set(changed, row, positions[i], query.values[i]);
        }
        changed.rows.push_back(std::move(row));
        CheckRow(changed, changed.rows.size() - 1);
        Replace(std::move(changed));
        return Affected(1);
    }

    Result operator()(const Update& query) {
        Table changed = m_store.Existing(query.table);
        long affected = 0;
        for (Row& row : changed.rows) {
            if (Matches(changed, row, query.where)) {
                for (const auto& [column, value] : query.changes) {
                    Set(changed, row, PositionOf(changed, column), value);
                }
                ++affected;
            }
        }
        for (std::size_t i = 0; i < changed.rows.size(); ++i) {
            CheckRow(changed, i);
        }
        if (affected != 0) {
            Replace(std::move(changed));
        }
        return Affected(affected);
    }

    Result operator()(const Select& query) {
        const Table& table = m_store.Existing(query.table);
        std::vector<Row> rows;
        std::copy_if(table.rows.begin(), table.rows.end(), std::back_inserter(rows),
                     [&](const Row& row) { return Matches(table, row, query.where); });
        if (!query.orderBy.empty()) {
            const std::size_t key = PositionOf(table, query.orderBy);
            std::stable_sort(rows.begin(), rows.end(),
                             [key](const Row& a, const Row& b) { return IsLess(a[key], b[key]); });
        }
        return query.isCount ? Count(table, query, rows) : Project(table, query, rows);
    }

    Result operator()(const Delete& query) {
        Table changed = m_store.Existing(query.table);
        const auto isDeleted = [&](const Row& row) { return Matches(changed, row, query.where); };
        const std::size_t affected = std::erase_if(changed.rows, isDeleted);
        if (affected != 0) {
            Replace(std::move(changed));
        }
        return Affected(static_cast<long>(affected));
    }

    Result operator()(const DropTable& query) {
        m_store.Existing(query.table);
        m_store.Remember(query.table, m_transaction);
        m_store.m_tables.erase(Lower(query.table));
        return {};
    }

private:
    void AddColumn(Table& table, const ColumnDefinition& column) const {
        if (HasColumn(table, column.name)) {
            Fail("42S21", "Column '" + column.name + "' already exists in table '" + table.name + "'.");
        }
        const auto type = std::find_if(m_types.begin(), m_types.end(),
                                       [&](const TypeRow& row) { return IsSameName(row.name, column.type); });
        if (type == m_types.end()) {
            Fail("42000", "Syntax error in field definition: no type '" + column.type + "'.");
        }
        table.columns.push_back({column.name, *type, column.isRequired});
    }

    Value ValueOf(const Operand& operand) const {
        if (const auto* const marker = std::get_if<Marker>(&operand)) {
            return m_parameters[static_cast<std::size_t>(marker->number) - 1];
        }
        return std::get<Value>(operand);
    }

    void Set(const Table& table, Row& row, std::size_t position, const Operand& operand) const {
        row[position] = Coerce(ValueOf(operand), table.columns[position].type.sqlType);
    }

    bool Matches(const Table& table, const Row& row, const Condition& condition) {
        return std::all_of(condition.begin(), condition.end(), [&](const Comparison& comparison) {
            return Holds(comparison, row[PositionOf(table, comparison.column)]);
        });
    }

    bool Holds(const Comparison& comparison, const Value& value) {
        switch (comparison.kind) {
        case Comparison::Kind::like:
            return std::holds_alternative<std::u16string>(value) &&
                   IsLike(TextOf(value), TextOf(ValueOf(comparison.value)));
        case Comparison::Kind::notIn: {
            const std::vector<Row> others = (*this)(*comparison.others).rows;
            return std::none_of(others.begin(), others.end(),
                                [&](const Row& other) { return AreEqual(other[0], value); });
        }
        default:
            return AreEqual(value, ValueOf(comparison.value));
        }
    }

    static Result Count(const Table& table, const Select& query, const std::vector<Row>& rows) {
        const std::size_t position = PositionOf(table, query.columns.at(0));
        const auto count = std::count_if(rows.begin(), rows.end(), [position](const Row& row) {
            return !std::holds_alternative<Null>(row[position]);
        });
        return {true, 1, {{std::int64_t{count}}}, -1};
    }

    static Result Project(const Table& table, const Select& query, std::vector<Row>& rows) {
        if (query.columns.empty()) {
            return {true, table.columns.size(), std::move(rows), -1};
        }
        const std::vector<std::size_t> positions = PositionsOf(table, query.columns);
        Result result{true, positions.size(), {}, -1};
        for (const Row& row : rows) {
            Row& chosen = result.rows.emplace_back();
            for (const std::size_t position : positions) {
                chosen.push_back(row[position]);
            }
        }
        return result;
    }

    void Replace(Table changed) {
        m_store.Remember(changed.name, m_transaction);
        m_store.Existing(changed.name) = std::move(changed);
    }

    Store& m_store;
    const std::vector<Value>& m_parameters;
    const std::vector<TypeRow>& m_types;
    Transaction& m_transaction;
};

Result Store::Execute(const Query& query, const std::vector<Value>& parameters,
                      const std::vector<TypeRow>& types, Transaction& transaction) {
    return std::visit(Executor(*this, parameters, types, transaction), query.body);
}

Table& Store::Existing(const std::string& name) {
    const auto found = m_tables.find(Lower(name));
    if (found == m_tables.end()) {
        Fail("42S02", "Table '" + name + "' does not exist.");
    }
    return found->second;
}

void Store::Remember(const std::string& name, Transaction& transaction) {
    const std::string key = Lower(name);
    const auto [writer, isFirst] = m_writers.emplace(key, &transaction);
    if (writer->second != &transaction) {
        Fail("HYT00", "Table '" + name + "' is locked by another connection.");
    }
    if (isFirst) {
        const auto found = m_tables.find(key);
        transaction.before[key] =
            found == m_tables.end() ? std::nullopt : std::optional<Table>(found->second);
    }
}

void Store::Commit(Transaction& transaction) {
    for (const auto& [key, table] : transaction.before) {
        m_writers.erase(key);
    }
    transaction.before.clear();
}

void Store::Rollback(Transaction& transaction) {
    for (auto& [key, table] : transaction.before) {
        if (table) {
            m_tables[key] = std::move(*table);
        } else {
            m_tables.erase(key);
        }
    }
    Commit(transaction);
}

void Store::Clear() {
    m_tables.clear();
    m_writers.clear();
}

} // namespace testodbc
