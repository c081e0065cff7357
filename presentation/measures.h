#pragma once

#include "foundation/record.h"

namespace quillmar {

// The lengths (points), times (milliseconds) and ratios of the layout. Every front end reads them by these
// names.
struct Measures {
  // Space
  int unit = 4;
  int within = 8;
  int between = 12;
  int gap = 16;
  int section = 24;
  int margin = 16;  // from the window's edge
  int regularMargin = 24;

  // Width
  int regularWidth = 600;  // windows at least this wide are regular
  int contentWidth = 600;
  int wideContentWidth = 700;  // the dashboard's list and a few others
  int sheetWidth = 640;
  int wideSheetWidth = 1040;    // of a sheet with two columns
  int deskWidth = 900;          // windows at least this wide show a page beside the dashboard
  int twoColumnWidth = 1200;    // windows at least this wide show a child's page in two columns
  double dashboardShare = 0.3;  // of a window with a page beside the dashboard
  int dashboardMinimum = 360;
  int dashboardMaximum = 520;

  // Parts
  int target = 44;  // minimum size of what can be pressed
  int primaryTarget = 50;
  int barHeight = 52;
  int corner = 12;
  int sheetCorner = 14;
  double haloOpacity = 0.3;

  // Type
  int largeTitleSize = 34;
  int titleSize = 22;
  int subtitleSize = 19;
  int headlineSize = 17;
  int bodySize = 17;
  int calloutSize = 15;
  int footnoteSize = 13;
  int captionSize = 12;
  int codeSize = 13;
  int largeCodeSize = 28;
  double lineHeight = 1.3;
  double faceHeight = 1.21;  // line height of the interface's font, relative to its size

  // Motion
  int quick = 150;
  int moderate = 250;
  int rerouting = 300;
};

template <>
inline constexpr auto wire<Measures> = record(
    required("unit", &Measures::unit), required("within", &Measures::within),
    required("between", &Measures::between), required("gap", &Measures::gap),
    required("section", &Measures::section), required("margin", &Measures::margin),
    required("regularMargin", &Measures::regularMargin), required("regularWidth", &Measures::regularWidth),
    required("contentWidth", &Measures::contentWidth),
    required("wideContentWidth", &Measures::wideContentWidth), required("sheetWidth", &Measures::sheetWidth),
    required("wideSheetWidth", &Measures::wideSheetWidth), required("deskWidth", &Measures::deskWidth),
    required("twoColumnWidth", &Measures::twoColumnWidth),
    required("dashboardShare", &Measures::dashboardShare),
    required("dashboardMinimum", &Measures::dashboardMinimum),
    required("dashboardMaximum", &Measures::dashboardMaximum), required("target", &Measures::target),
    required("primaryTarget", &Measures::primaryTarget), required("barHeight", &Measures::barHeight),
    required("corner", &Measures::corner), required("sheetCorner", &Measures::sheetCorner),
    required("haloOpacity", &Measures::haloOpacity), required("largeTitleSize", &Measures::largeTitleSize),
    required("titleSize", &Measures::titleSize), required("subtitleSize", &Measures::subtitleSize),
    required("headlineSize", &Measures::headlineSize), required("bodySize", &Measures::bodySize),
    required("calloutSize", &Measures::calloutSize), required("footnoteSize", &Measures::footnoteSize),
    required("captionSize", &Measures::captionSize), required("codeSize", &Measures::codeSize),
    required("largeCodeSize", &Measures::largeCodeSize), required("lineHeight", &Measures::lineHeight),
    required("faceHeight", &Measures::faceHeight), required("quick", &Measures::quick),
    required("moderate", &Measures::moderate), required("rerouting", &Measures::rerouting));

inline constexpr Measures measures;

}  // namespace quillmar
