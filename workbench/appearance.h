#pragma once

#include <QVariant>

class QWidget;

// How a window looks, as one value of the settings: geometry, state, and what stands in its controls.

QVariantMap appearanceOf(QWidget *window);

/// What `appearance` does not say stays as it is.
void restoreAppearance(QWidget *window, const QVariantMap &appearance);
