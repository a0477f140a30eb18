#pragma once

// One progress bar per running download on a terminal (stderr), redrawn in place; nothing when stderr is not a
// terminal. The bars are fed from the updates' worker threads.

#include <QRecursiveMutex>
#include <QString>
#include <QTextStream>

#include <memory>
#include <vector>

class UpdateRows;

class CliProgressBoard
{
public:
    // outputLock is held by everyone who prints on err.
    CliProgressBoard(QTextStream &err, QRecursiveMutex &outputLock, bool terminal);
    ~CliProgressBoard();

    // A bar for one update, owned by the board.
    UpdateRows *add(const QString &name);
    // Leaves the bars as they are last drawn; what is printed next goes below them, and the bars are drawn again
    // below that when they move.
    void finish();

private:
    class Bar;
    void update(Bar &bar, double fraction, const QString &state);
    void redraw();

    QTextStream &m_err;
    const bool m_terminal;
    QRecursiveMutex &m_mutex;
    std::vector<std::unique_ptr<Bar>> m_bars;
    int m_drawnLines = 0;
};
