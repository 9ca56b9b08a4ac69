#include "nearest.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

constexpr int MAX_WORDS = 18;  // in a message

// How many characters must be inserted, removed, replaced or swapped with their neighbours to make
// one text the other.
int distance(const QString &a, const QString &b)
{
    const auto columns = size_t(b.size()) + 1;
    std::vector<std::vector<int>> rows(size_t(a.size()) + 1, std::vector<int>(columns));
    std::iota(rows[0].begin(), rows[0].end(), 0);
    for (int i = 1; i <= int(a.size()); ++i) {
        std::vector<int> &row = rows[size_t(i)];
        const std::vector<int> &before = rows[size_t(i) - 1];
        row[0] = i;
        for (int j = 1; j <= int(b.size()); ++j) {
            const auto at = size_t(j);
            const int cost = a.at(i - 1) == b.at(j - 1) ? 0 : 1;
            row[at] = std::min({ row[at - 1] + 1, before[at] + 1, before[at - 1] + cost });
            const bool isSwapped =
                i > 1 && j > 1 && a.at(i - 1) == b.at(j - 2) && a.at(i - 2) == b.at(j - 1);
            if (isSwapped) {
                row[at] = std::min(row[at], rows[size_t(i) - 2][at - 2] + 1);
            }
        }
    }
    return rows.back().back();
}

}  // namespace

QString nearest(const QString &word, const QStringList &words)
{
    const QString typed = word.toLower();
    QString best;
    int least = 1 + int(std::max<qsizetype>(1, typed.size() / 3));
    for (const QString &candidate : words) {
        const QString known = candidate.toLower();
        const bool isStart = typed.size() > 1 && known.startsWith(typed);
        const int difference = isStart ? 0 : distance(typed, known);
        if (difference < least && difference < int(known.size())) {
            least = difference;
            best = candidate;
        }
    }
    return best;
}

QString noSuch(const QString &what, const QString &word, const QStringList &words)
{
    const QString start = QStringLiteral("there is no %1 \"%2\"").arg(what, word);
    const QString meant = nearest(word, words);
    if (!meant.isNull()) {
        return start + QStringLiteral("; did you mean %1?").arg(meant);
    }
    return words.isEmpty() || words.size() > MAX_WORDS
        ? start
        : start + QStringLiteral("; there are ") + words.join(QStringLiteral(", "));
}
