// SPDX-License-Identifier: MIT
#include "services/CaptchaPicture.h"

#include <QtCore/QBuffer>
#include <QtCore/QMap>
#include <QtCore/QRandomGenerator>
#include <QtCore/QStringList>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>

#include <algorithm>

namespace {

// Of what looks alike, such as O and 0, at most one.
const QString clearCharacters = QStringLiteral("234679ACDEFHJKLMNPRTUWXY");

// Strokes on a grid of 5 by 7 points, each a run of points "xy" counted from the top left.
const QMap<QChar, QString> &glyphs()
{
    static const QMap<QChar, QString> table = {
        {QLatin1Char('0'), QStringLiteral("103041453616050110 4105")},
        {QLatin1Char('1'), QStringLiteral("112026 1636")},
        {QLatin1Char('2'), QStringLiteral("0110304142330646")},
        {QLatin1Char('3'), QStringLiteral("01103041423313 334445361605")},
        {QLatin1Char('4'), QStringLiteral("36300444")},
        {QLatin1Char('5'), QStringLiteral("400002324345361605")},
        {QLatin1Char('6'), QStringLiteral("413010010516364544331304")},
        {QLatin1Char('7'), QStringLiteral("004016")},
        {QLatin1Char('8'), QStringLiteral("103041423313020110 1304051636454433")},
        {QLatin1Char('9'), QStringLiteral("051636454130100102133342")},
        {QLatin1Char('A'), QStringLiteral("062046 1434")},
        {QLatin1Char('B'), QStringLiteral("0006 0030414233 033344453606")},
        {QLatin1Char('C'), QStringLiteral("4130100105163645")},
        {QLatin1Char('D'), QStringLiteral("00304145360600")},
        {QLatin1Char('E'), QStringLiteral("40000646 0333")},
        {QLatin1Char('F'), QStringLiteral("400006 0333")},
        {QLatin1Char('G'), QStringLiteral("41301001051636454323")},
        {QLatin1Char('H'), QStringLiteral("0006 4046 0343")},
        {QLatin1Char('I'), QStringLiteral("1030 2026 1636")},
        {QLatin1Char('J'), QStringLiteral("4045361605")},
        {QLatin1Char('K'), QStringLiteral("0006 400346")},
        {QLatin1Char('L'), QStringLiteral("000646")},
        {QLatin1Char('M'), QStringLiteral("0600234046")},
        {QLatin1Char('N'), QStringLiteral("06004640")},
        {QLatin1Char('O'), QStringLiteral("103041453616050110")},
        {QLatin1Char('P'), QStringLiteral("06003041423303")},
        {QLatin1Char('Q'), QStringLiteral("103041453616050110 2446")},
        {QLatin1Char('R'), QStringLiteral("06003041423303 2346")},
        {QLatin1Char('S'), QStringLiteral("413010010213334445361605")},
        {QLatin1Char('T'), QStringLiteral("0040 2026")},
        {QLatin1Char('U'), QStringLiteral("000516364540")},
        {QLatin1Char('V'), QStringLiteral("002640")},
        {QLatin1Char('W'), QStringLiteral("0016233640")},
        {QLatin1Char('X'), QStringLiteral("0046 4006")},
        {QLatin1Char('Y'), QStringLiteral("002340 2326")},
        {QLatin1Char('Z'), QStringLiteral("00400646")},
    };
    return table;
}

double random(double minimum, double maximum)
{
    return minimum + QRandomGenerator::system()->generateDouble() * (maximum - minimum);
}

QPointF randomPoint(const QSizeF &area)
{
    return {random(0, area.width()), random(0, area.height())};
}

QColor randomInk()
{
    return QColor::fromHsv(QRandomGenerator::system()->bounded(360), 200, 130);
}

// The glyph around the origin, one unit from a grid point to the next.
QPainterPath glyphPath(QChar character)
{
    QPainterPath path;
    const QStringList strokes = glyphs().value(character.toUpper()).split(QLatin1Char(' '));
    for (const QString &stroke : strokes) {
        for (int i = 0; i + 1 < stroke.size(); i += 2) {
            const QPointF point(stroke.at(i).digitValue() - 2, stroke.at(i + 1).digitValue() - 3);
            if (i == 0)
                path.moveTo(point);
            else
                path.lineTo(point);
        }
    }
    return path;
}

void drawText(QPainter &painter, const QString &text, const QSizeF &area)
{
    const double cell = area.width() / text.size();
    const double unit = std::min(cell / 7, area.height() / 10);
    for (int i = 0; i < text.size(); ++i) {
        painter.save();
        painter.translate((i + 0.5) * cell + random(-unit, unit) / 2,
                          area.height() / 2 + random(-unit, unit));
        painter.rotate(random(-20, 20));
        painter.shear(random(-0.2, 0.2), 0);
        painter.scale(unit * random(0.9, 1.1), unit * random(0.9, 1.1));
        painter.setPen(QPen(randomInk(), 0.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(glyphPath(text.at(i)));
        painter.restore();
    }
}

void drawNoise(QPainter &painter, const QSizeF &area)
{
    constexpr int curves = 4;
    for (int i = 0; i < curves; ++i) {
        QPainterPath path(QPointF(0, random(0, area.height())));
        path.cubicTo(randomPoint(area), randomPoint(area),
                     QPointF(area.width(), random(0, area.height())));
        painter.setPen(QPen(randomInk().lighter(170), 1));
        painter.drawPath(path);
    }
    const int dots = static_cast<int>(area.width() * area.height() / 60);
    for (int i = 0; i < dots; ++i) {
        painter.setPen(QPen(randomInk().lighter(150), 1));
        painter.drawPoint(randomPoint(area));
    }
}

} // namespace

QString randomCaptchaText(int length)
{
    QString text;
    for (int i = 0; i < length; ++i)
        text += clearCharacters.at(QRandomGenerator::system()->bounded(clearCharacters.size()));
    return text;
}

QByteArray captchaPicture(const QString &text, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor(245, 245, 240));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawNoise(painter, image.size());
    drawText(painter, text, image.size());
    painter.end();
    QBuffer png;
    png.open(QIODevice::WriteOnly);
    image.save(&png, "PNG");
    return png.data();
}
