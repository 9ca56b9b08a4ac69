#include "look.h"

#include <QApplication>
#include <QPalette>
#include <QProxyStyle>

namespace {

struct Colour
{
    QPalette::ColorRole role;
    QRgb light;
    QRgb dark;
};
constexpr Colour COLOURS[] = {
    { QPalette::Window, 0xeff0f1, 0x2a2d31 },
    { QPalette::WindowText, 0x1f2326, 0xe8eaed },
    { QPalette::Base, 0xffffff, 0x1d2023 },
    { QPalette::AlternateBase, 0xf5f7f9, 0x25282c },
    { QPalette::Text, 0x1f2326, 0xe8eaed },
    { QPalette::PlaceholderText, 0x6b7278, 0x9aa1a8 },
    { QPalette::Button, 0xe6e8ea, 0x373b40 },
    { QPalette::ButtonText, 0x1f2326, 0xe8eaed },
    { QPalette::BrightText, 0xffffff, 0xffffff },
    { QPalette::ToolTipBase, 0xffffff, 0x373b40 },
    { QPalette::ToolTipText, 0x1f2326, 0xe8eaed },
    { QPalette::Highlight, 0x1f6fb2, 0x2f81c7 },
    { QPalette::HighlightedText, 0xffffff, 0xffffff },
    { QPalette::Link, 0x1f6fb2, 0x6db3ee },
};
constexpr QRgb DISABLED_LIGHT = 0x8a9095;
constexpr QRgb DISABLED_DARK = 0x7b8187;

// A style with more room between rows.
class AiryStyle : public QProxyStyle
{
public:
    AiryStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
        const QWidget *widget) const override
    {
        const QSize packed = QProxyStyle::sizeFromContents(type, option, size, widget);
        return type == CT_ItemViewItem ? packed + QSize(0, 5) : packed;
    }
};

}  // namespace

void setUpLook() { QApplication::setStyle(new AiryStyle); }

bool isDarkLook() { return QApplication::palette().color(QPalette::Window).lightness() < 128; }

void setDarkLook(bool dark)
{
    QPalette palette(QColor::fromRgb(dark ? COLOURS[6].dark : COLOURS[6].light),
        QColor::fromRgb(dark ? COLOURS[0].dark : COLOURS[0].light));
    for (const Colour &colour : COLOURS) {
        palette.setColor(colour.role, QColor::fromRgb(dark ? colour.dark : colour.light));
    }
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText }) {
        palette.setColor(
            QPalette::Disabled, role, QColor::fromRgb(dark ? DISABLED_DARK : DISABLED_LIGHT));
    }
    QApplication::setPalette(palette);
}
