#include "sandbox/browsing.h"

#include <algorithm>
#include <array>
#include <span>

namespace quillmar::sandbox {
namespace {

// Invented sites under names reserved for examples, and some of the default sites.
constexpr std::array<std::string_view, 24> web{
    "www.wikipedia.example",    "upload.wikipedia.example",  "homework.school.example",
    "learn.school.example",     "video.streaming.example",   "cdn.streaming.example",
    "images.streaming.example", "chat.friends.example",      "media.friends.example",
    "www.news.example",         "static.news.example",       "shop.example.com.au",
    "images.example.com.au",    "www.football.example",      "tickets.football.example",
    "maps.example.org",         "tracker.ads.example",       "pixel.ads.example",
    "www.google.com",           "fonts.gstatic.com",         "www.apple.com",
    "gateway.icloud.com",       "login.microsoftonline.com", "api.music.example"};

constexpr std::array<std::string_view, 10> play{
    "auth.games.example",     "match.games.example",    "cdn.games.example",      "voice.games.example",
    "store.consoles.example", "saves.consoles.example", "live.streaming.example", "cdn.streaming.example",
    "telemetry.ads.example",  "time.consoles.example"};

constexpr std::array<std::string_view, 6> types{"A", "A", "A", "AAAA", "AAAA", "HTTPS"};
constexpr std::array<std::string_view, 5> consoles{"playstation", "xbox", "nintendo", "smarttv", "other"};

std::string_view any(std::span<const std::string_view> choices, Dice& dice) {
  return choices[std::uniform_int_distribution<std::size_t>{0, choices.size() - 1}(dice)];
}

}  // namespace

Lookup anyLookup(std::string_view deviceType, Dice& dice) {
  const bool console = std::ranges::find(consoles, deviceType) != consoles.end();
  const auto domain = console ? any(play, dice) : any(web, dice);
  return {domain, any(types, dice)};
}

}  // namespace quillmar::sandbox
