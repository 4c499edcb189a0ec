// SPDX-License-Identifier: MIT
#include "Nearest.h"

#include <algorithm>
#include <vector>

namespace {

/// Optimal string alignment: the table's row i holds the distances of the first i letters of `a`
/// to all beginnings of `b`.
int distance(const QString &a, const QString &b)
{
    const auto width = static_cast<std::size_t>(b.size()) + 1;
    std::vector<std::vector<int>> rows(static_cast<std::size_t>(a.size()) + 1,
                                       std::vector<int>(width));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = 0; j < width; ++j) {
            if (i == 0 || j == 0) {
                rows[i][j] = static_cast<int>(i + j);
                continue;
            }
            const auto letterOf = [](const QString &text, std::size_t position) {
                return text[static_cast<int>(position) - 1];
            };
            const int exchanged = letterOf(a, i) == letterOf(b, j) ? 0 : 1;
            int least =
                std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, rows[i - 1][j - 1] + exchanged});
            if (i > 1 && j > 1 && letterOf(a, i) == letterOf(b, j - 1) &&
                letterOf(a, i - 1) == letterOf(b, j))
                least = std::min(least, rows[i - 2][j - 2] + 1);
            rows[i][j] = least;
        }
    }
    return rows.back().back();
}

} // namespace

QString nearestName(const QString &typed, const QStringList &names)
{
    constexpr int longest = 64; // of any name; the table grows with the square
    if (typed.size() > longest)
        return {};
    QString nearest;
    int least = std::max(1, typed.size() / 3) + 1;
    for (const QString &name : names) {
        const int found = distance(typed.toLower(), name.toLower());
        if (found < least) {
            least = found;
            nearest = name;
        }
    }
    return nearest;
}
