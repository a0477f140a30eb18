#include "cli/CliProgressBoard.h"

#include "cli/Command.h"
#include "install/UpdateRows.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr int kBarWidth = 30;
constexpr int kNameWidth = 24;
} // namespace

class CliProgressBoard::Bar : public UpdateRows
{
public:
    Bar(CliProgressBoard &board, const QString &name) : m_board(board), name(name) {}

    void updateMainProgressBar(double value) override { m_board.update(*this, value, QString()); }
    void disableCancelButtons() override { m_board.update(*this, fraction, Cli::tr("installing")); }
    void hideProgressBarShowFields(double value) override { m_board.update(*this, value, Cli::tr("done")); }

    CliProgressBoard &m_board;
    const QString name;
    double fraction = 0.0;
    int shownPercent = -1;
    QString state;
};

CliProgressBoard::CliProgressBoard(QTextStream &err, QRecursiveMutex &outputLock, bool terminal)
    : m_err(err), m_terminal(terminal), m_mutex(outputLock)
{
}

CliProgressBoard::~CliProgressBoard() = default;

UpdateRows *CliProgressBoard::add(const QString &name)
{
    const QMutexLocker lock(&m_mutex);
    m_bars.push_back(std::make_unique<Bar>(*this, name));
    return m_bars.back().get();
}

void CliProgressBoard::update(Bar &bar, double fraction, const QString &state)
{
    if (!m_terminal) {
        return;
    }
    const QMutexLocker lock(&m_mutex);
    // A host that does not say the size makes the fraction pass 1: the bar stays full.
    const int percent = int(std::lround(std::clamp(fraction, 0.0, 1.0) * 100));
    if (percent == bar.shownPercent && state == bar.state) {
        return;
    }
    bar.fraction = fraction;
    bar.shownPercent = percent;
    bar.state = state;
    redraw();
}

void CliProgressBoard::redraw()
{
    if (m_drawnLines > 0) {
        m_err << "\x1b[" << m_drawnLines << 'F';
    }
    for (const auto &bar : m_bars) {
        const int filled = bar->shownPercent * kBarWidth / 100;
        m_err << "\x1b[2K" << bar->name.left(kNameWidth).leftJustified(kNameWidth) << " [" << QString(filled, u'#')
              << QString(kBarWidth - filled, u' ') << "] "
              << QString::number(std::max(bar->shownPercent, 0)).rightJustified(3) << '%';
        if (!bar->state.isEmpty()) {
            m_err << ' ' << bar->state;
        }
        m_err << '\n';
    }
    m_drawnLines = int(m_bars.size());
    m_err.flush();
}

void CliProgressBoard::finish()
{
    const QMutexLocker lock(&m_mutex);
    m_drawnLines = 0;
}
