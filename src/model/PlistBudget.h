#pragma once

// The bounds every property-list reader keeps, whatever the bytes: how deeply arrays and dictionaries nest (the
// readers recurse once per level) and how many objects a list becomes (an object that a binary list refers to from
// several places counts once for each, as each is a copy to whoever walks the result). Real lists stay far inside
// both; a list past either is refused, so one hostile bundle costs a scan a few milliseconds and nothing more.

#include <QString>

class PlistBudget
{
public:
    static constexpr int kDeepest = 512;
    static constexpr qint64 kMostObjects = 256 * 1024;

    // Counts objects more; false once the list holds more than kMostObjects.
    bool spend(qint64 objects = 1)
    {
        m_objects += objects;
        return m_objects <= kMostObjects;
    }
    // Whether a container holding `levels` levels (itself included) fits at the current depth.
    bool fits(int levels) const { return m_depth + levels <= kDeepest; }

    // One level deeper for as long as it lives; ok() is false past kDeepest.
    class Level
    {
    public:
        explicit Level(PlistBudget &budget) : m_budget(budget), m_ok(budget.enter()) {}
        ~Level() { m_budget.leave(); }
        Level(const Level &) = delete;
        Level &operator=(const Level &) = delete;
        bool ok() const { return m_ok; }

    private:
        PlistBudget &m_budget;
        bool m_ok;
    };

    static QString tooDeep() { return QStringLiteral("property list nested too deeply"); }
    static QString tooManyObjects() { return QStringLiteral("property list holds too many objects"); }
    // Why a reader gave a list up: a bound's own words, else what makes the list malformed.
    static QString problem(const QString &why)
    {
        return why == tooDeep() || why == tooManyObjects() ? why
                                                           : QStringLiteral("malformed property list: %1").arg(why);
    }

private:
    bool enter() { return ++m_depth <= kDeepest; }
    void leave() { --m_depth; }

    qint64 m_objects = 0;
    int m_depth = 0;
};
