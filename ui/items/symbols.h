#pragma once

#include <algorithm>
#include <array>
#include <string_view>

// The symbols that screens name, each drawn by one file of ui/icons.
namespace quillmar::ui {

struct Symbol {
  std::string_view name;
  std::string_view file;
};

// Sorted by name.
inline constexpr auto symbols = std::to_array<Symbol>({
    {"arrow.clockwise", "arrow_clockwise"},
    {"arrow.triangle.2.circlepath", "arrow_sync"},
    {"calendar", "calendar_ltr"},
    {"camera", "camera"},
    {"camera.fill", "camera"},
    {"candybarphone", "phone_status_bar"},
    {"chart.bar.fill", "data_bar_vertical"},
    {"checkmark", "checkmark"},
    {"checkmark.circle", "checkmark_circle"},
    {"checkmark.circle.fill", "checkmark_circle"},
    {"checkmark.shield", "shield_checkmark"},
    {"checkmark.shield.fill", "shield_checkmark"},
    {"chevron.down", "chevron_down"},
    {"chevron.left", "chevron_left"},
    {"chevron.right", "chevron_right"},
    {"chevron.up", "chevron_up"},
    {"circle", "circle"},
    {"circle.lefthalf.filled", "dark_theme"},
    {"clock", "clock"},
    {"clock.fill", "clock"},
    {"crown", "crown"},
    {"crown.fill", "crown"},
    {"desktopcomputer", "desktop"},
    {"doc.on.doc", "copy"},
    {"doc.on.doc.fill", "copy"},
    {"ellipsis", "more_horizontal"},
    {"ellipsis.circle.fill", "more_circle"},
    {"envelope", "mail"},
    {"envelope.fill", "mail"},
    {"exclamationmark.circle", "error_circle"},
    {"exclamationmark.circle.fill", "error_circle"},
    {"exclamationmark.shield.fill", "shield_error"},
    {"exclamationmark.triangle", "warning"},
    {"exclamationmark.triangle.fill", "warning"},
    {"eye", "eye"},
    {"eye.fill", "eye"},
    {"eye.slash", "eye_off"},
    {"eye.slash.fill", "eye_off"},
    {"faceid", "scan_person"},
    {"gamecontroller.fill", "xbox_controller"},
    {"gear", "settings"},
    {"gearshape", "settings"},
    {"gearshape.fill", "settings"},
    {"globe", "globe"},
    {"hand.raised", "hand_right"},
    {"hand.raised.fill", "hand_right"},
    {"house", "home"},
    {"house.fill", "home"},
    {"info.circle", "info"},
    {"info.circle.fill", "info"},
    {"ipad", "tablet"},
    {"iphone", "phone"},
    {"key", "key"},
    {"key.fill", "key"},
    {"laptopcomputer", "laptop"},
    {"line.3.horizontal.decrease", "filter"},
    {"link", "link"},
    {"list.bullet", "text_bullet_list_ltr"},
    {"lock", "lock_closed"},
    {"lock.fill", "lock_closed"},
    {"lock.open.fill", "lock_open"},
    {"magnifyingglass", "search"},
    {"minus.circle.fill", "subtract_circle"},
    {"moon.fill", "weather_moon"},
    {"network", "router"},
    {"nosign", "prohibited"},
    {"number", "number_symbol"},
    {"pencil", "edit"},
    {"person", "person"},
    {"person.2", "people"},
    {"person.2.fill", "people"},
    {"person.3.fill", "people_team"},
    {"person.badge.plus", "person_add"},
    {"person.crop.circle.fill", "person_circle"},
    {"person.fill", "person"},
    {"phone", "phone"},
    {"photo.fill", "image"},
    {"plus", "add"},
    {"plus.circle.fill", "add_circle"},
    {"qrcode", "qr_code"},
    {"qrcode.viewfinder", "scan_qr_code"},
    {"rectangle.portrait.and.arrow.right", "sign_out"},
    {"server.rack", "server"},
    {"shield", "shield"},
    {"shield.fill", "shield"},
    {"shield.slash", "shield_dismiss"},
    {"shield.slash.fill", "shield_dismiss"},
    {"square.and.arrow.up", "share_ios"},
    {"sun.max.fill", "weather_sunny"},
    {"touchid", "fingerprint"},
    {"trash", "delete"},
    {"trash.fill", "delete"},
    {"tv", "tv"},
    {"tv.fill", "tv"},
    {"wifi", "wifi_1"},
    {"wifi.slash", "wifi_off"},
    {"xmark", "dismiss"},
    {"xmark.circle", "dismiss_circle"},
    {"xmark.circle.fill", "dismiss_circle"},
    {"xmark.shield.fill", "shield_dismiss"},
});

static_assert(std::ranges::is_sorted(symbols, {}, &Symbol::name));

// Empty for a name that is not in the table.
constexpr std::string_view symbolFile(std::string_view name) {
  const auto* const found = std::ranges::lower_bound(symbols, name, {}, &Symbol::name);
  return found != symbols.end() && found->name == name ? found->file : std::string_view();
}

}  // namespace quillmar::ui
