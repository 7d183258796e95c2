// A window looked at as the user sees it: no control covers another, none
// sticks out of its window or frame, and every caption of a button, option,
// check box or label fits its box.
#pragma once

#include "core/plotsurface.h"

#include <QtWidgets>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarnic::test {

inline std::string describe(const QWidget* w) {
    QString text;
    if (auto* b = qobject_cast<const QAbstractButton*>(w)) text = b->text();
    if (auto* l = qobject_cast<const QLabel*>(w)) text = l->text();
    if (auto* g = qobject_cast<const QGroupBox*>(w)) text = g->title();
    if (text.isEmpty()) text = w->accessibleName(); // a button's caption lies on its face
    return (QString(w->metaObject()->className()) + " \"" + text.left(40) + "\"").toStdString();
}

// Whether the text of a control fits its box: one line within the width, or
// wrapped lines within the height. The room leaves out what a check mark or a
// button frame takes.
inline std::optional<std::string> cutText(const QWidget* w, const QString& text, bool wraps) {
    if (text.isEmpty()) return std::nullopt;
    int chrome = qobject_cast<const QPushButton*>(w) ? 6 : 0;
    if (qobject_cast<const QCheckBox*>(w) || qobject_cast<const QRadioButton*>(w))
        chrome = w->style()->pixelMetric(QStyle::PM_IndicatorWidth) +
                 w->style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing) + 2;
    const QFontMetrics fm(w->font());
    const int room = wraps ? w->height() + 2 : w->width() - chrome;
    const int need =
        wraps ? fm.boundingRect(QRect(0, 0, w->width() - chrome, 10000), Qt::TextWordWrap, text)
                    .height()
              : fm.horizontalAdvance(text);
    if (need <= room) return std::nullopt;
    return "is cut: needs " + std::to_string(need) + " px, has " + std::to_string(room);
}

// The faults of one window's layout, as lines of text.
inline std::vector<std::string> layoutFaults(QWidget& window) {
    std::vector<std::string> faults;
    // The controls a user reads or operates, each with the boxes it draws in
    // (window coordinates): what may not overlap another. Plain containers are
    // looked through; a captioned frame draws its caption and its border, and
    // the rest of its caption row is free.
    std::vector<std::pair<QWidget*, std::vector<QRect>>> items;
    auto drawnBoxes = [&](QWidget* w) {
        const QPoint at = w->mapTo(&window, QPoint(0, 0));
        if (auto* g = qobject_cast<QGroupBox*>(w); g && !g->title().isEmpty()) {
            QStyleOptionGroupBox option;
            option.initFrom(g);
            option.text = g->title();
            option.subControls = QStyle::SC_GroupBoxLabel;
            const QRect title = g->style()->subControlRect(QStyle::CC_GroupBox, &option,
                                                           QStyle::SC_GroupBoxLabel, g);
            const QRect body = g->rect().adjusted(0, title.bottom() + 1, 0, 0);
            return std::vector<QRect>{title.translated(at), body.translated(at)};
        }
        return std::vector<QRect>{QRect(at, w->size())};
    };
    std::function<void(QWidget&)> walk = [&](QWidget& parent) {
        for (QObject* o : parent.children()) {
            auto* w = qobject_cast<QWidget*>(o);
            if (!w || w->isWindow() || !w->isVisibleTo(&window)) continue;
            // A picture larger than its frame is scrolled inside it.
            auto* label = qobject_cast<QLabel*>(w);
            if (!(label && !label->pixmap().isNull()) && !parent.rect().contains(w->geometry()))
                faults.push_back(describe(w) + " sticks out of " + describe(&parent));
            std::optional<std::string> cut;
            auto* button = qobject_cast<QAbstractButton*>(w);
            if (qobject_cast<QPushButton*>(w)) {
                // A button shows its caption on a word-wrapped face of its own.
                for (QLabel* face : w->findChildren<QLabel*>(Qt::FindDirectChildrenOnly)) {
                    if (!w->rect().contains(face->geometry()))
                        faults.push_back(describe(face) + " sticks out of its button");
                    if (auto c = cutText(face, face->text(), true))
                        faults.push_back(describe(face) + " " + *c);
                }
            }
            if (button) cut = cutText(w, button->text(), false);
            if (label)
                cut = cutText(w, label->text(), label->wordWrap() || label->text().contains('\n'));
            if (cut) faults.push_back(describe(w) + " " + *cut);
            auto* area = qobject_cast<QAbstractScrollArea*>(w);
            auto* plot = dynamic_cast<PlotSurface*>(w);
            if (button || label || area || plot || qobject_cast<QLineEdit*>(w) ||
                qobject_cast<QAbstractSlider*>(w) || qobject_cast<QComboBox*>(w) ||
                qobject_cast<QGroupBox*>(w))
                items.emplace_back(w, drawnBoxes(w));
            // Inside buttons, scroll areas and plots Qt and the surface lay out.
            if (!button && !area && !plot) walk(*w);
        }
    };
    walk(window);
    for (auto i = items.begin(); i != items.end(); ++i)
        for (auto j = i + 1; j != items.end(); ++j) {
            const auto& [a, aBoxes] = *i;
            const auto& [b, bBoxes] = *j;
            if (a->isAncestorOf(b) || b->isAncestorOf(a)) continue;
            for (const QRect& p : aBoxes)
                for (const QRect& q : bBoxes)
                    if (p.intersects(q))
                        faults.push_back(describe(a) + " overlaps " + describe(b) + " at " +
                                         std::to_string(p.x()) + "," + std::to_string(p.y()));
        }
    return faults;
}

} // namespace tarnic::test
