#pragma once
// The maker's logo and the program's icon, drawn from the SVG artwork in the resources
// at the pixel density of the screen they are shown on.
#include <QIcon>
#include <QPixmap>
#include <QSize>

namespace kdx {

// The logo's size in the About and wait windows, logical pixels.
constexpr QSize kVelmorLogoSize(200, 75);

// The VELMOR logo fitted into `size` (logical pixels, proportions kept, centred), rendered
// for `devicePixelRatio`.
QPixmap velmorLogo(QSize size, qreal devicePixelRatio);

// The KDX Tool application icon at the usual icon sizes.
QIcon kdxToolIcon();

} // namespace kdx
