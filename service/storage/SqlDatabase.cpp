#include "storage/SqlDatabase.h"

namespace {

thread_local QString lastErrorText;
thread_local bool faultOccurred = false;

} // namespace

QString SqlDatabase::lastError()
{
    return lastErrorText;
}

void SqlDatabase::noteError(const QString &message)
{
    lastErrorText = message;
}

namespace StorageFault {

void clear()
{
    faultOccurred = false;
}

void note()
{
    faultOccurred = true;
}

bool occurred()
{
    return faultOccurred;
}

} // namespace StorageFault

SqlStatement &SqlStatement::set(int index, SqlValue value)
{
    if (m_values.size() < index)
        m_values.resize(index);
    m_values[index - 1] = std::move(value);
    return *this;
}

bool SqlStatement::next()
{
    if (!m_cursor)
        m_cursor = m_db.run(m_sql, m_values);
    return m_cursor->next();
}

bool SqlStatement::exec()
{
    while (next()) {
    }
    return ok();
}

std::optional<qint64> SqlStatement::insertedId()
{
    if (!next())
        return std::nullopt;
    const qint64 id = integer(0);
    return exec() ? std::optional(id) : std::nullopt;
}

SqlTransaction::~SqlTransaction()
{
    if (m_open)
        m_db.rollback();
}

bool SqlTransaction::commit()
{
    if (!m_open)
        return false;
    m_open = false;
    return m_db.commit();
}
