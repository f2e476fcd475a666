#pragma once

#include <QPainter>

#include "ViewTransform.h"
#include "session/Overlay.h"

/// Draws what the tool shows over the picture: points as crosses in their track boxes, the search
/// box of the selected one, anchor arrows, the matting box. Lines keep their width at any zoom and
/// have a dark rim, legible on any picture.
void PaintOverlay(QPainter& painter, const SOverlay& overlay, const CViewTransform& view);

/// The line colour of the host interface's colour codes.
QColor OverlayColor(int code);
