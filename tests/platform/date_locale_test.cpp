#include "platform/common/date_locale.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>

#include "foundation/date_format.h"
#include "platform/linux/linux_device_info.h"
#include "testing/scoped_environment.h"

namespace quillmar {
namespace {

TEST(DateLocale, of_an_environments_name_is_the_one_that_icu_knows_it_by) {
  for (const auto& [name, expected] :
       {std::pair("de_DE.UTF-8", "de_DE"), std::pair("de", "de"), std::pair("en_AU", "en_AU"),
        std::pair("fr_CA.iso88591", "fr_CA"), std::pair("nl_NL.UTF-8@euro", "nl_NL"),
        std::pair("ca_ES.UTF-8@valencia", "ca_ES"), std::pair("sr_RS@latin", "sr_Latn_RS"),
        std::pair("sr_RS.UTF-8@latin", "sr_Latn_RS"), std::pair("sr_RS", "sr_RS"),
        std::pair("uz_UZ@cyrillic", "uz_Cyrl_UZ"), std::pair("de_ZZ", "de_ZZ"),
        std::pair("es_419", "es_419")}) {
    EXPECT_EQ(icuLocale(name), expected) << name;
  }
}

TEST(DateLocale, of_a_name_that_means_nothing_to_people_is_a_plain_one) {
  for (const std::string name :
       {"",      "C",    "POSIX",  "C.UTF-8",  "C.utf8", "xx_YY",     "xx_YY.UTF-8@latin", "root",
        "und",   "_DE",  ".UTF-8", "@latin",   "german", "d",         "de_DE_extra",       "de_D3",
        "../de", "de\n", "1",      "\xff\xfe", "%s%n",   "x-private", "@calendar=buddhist"}) {
    EXPECT_EQ(icuLocale(name), "en_US") << name;
  }
  EXPECT_EQ(icuLocale(std::string(100000, 'x')), "en_US");
  EXPECT_EQ(icuLocale("de_DE@calendar=buddhist"), "de_DE");
}

// A process whose environment says nothing at first.
struct Surroundings : testing::Test {
  // How a screen of this process writes a date.
  static std::string written() {
    const LinuxDeviceInfo device;
    return DateStyles(device.locale(), "UTC").mediumDate(Date(std::chrono::seconds(1475965860)));
  }

  const ScopedEnvironment all{"LC_ALL", nullptr};
  const ScopedEnvironment time{"LC_TIME", nullptr};
  const ScopedEnvironment messages{"LC_MESSAGES", nullptr};
  const ScopedEnvironment lang{"LANG", nullptr};
};

TEST_F(Surroundings, that_say_nothing_have_dates_for_people_all_the_same) {
  EXPECT_EQ(written(), "Oct 8, 2016");
  const ScopedEnvironment empty("LC_ALL", "");
  EXPECT_EQ(written(), "Oct 8, 2016");
}

TEST_F(Surroundings, decide_on_dates_by_the_variable_that_is_first_in_rank) {
  const ScopedEnvironment general("LANG", "fr_FR.UTF-8");
  EXPECT_EQ(written(), "8 oct. 2016");
  const ScopedEnvironment words("LC_MESSAGES", "it_IT.UTF-8");
  EXPECT_EQ(written(), "8 oct. 2016") << "dates are no messages";
  const ScopedEnvironment dates("LC_TIME", "de_DE.UTF-8");
  EXPECT_EQ(written(), "08.10.2016");
  const ScopedEnvironment everything("LC_ALL", "es_ES.UTF-8");
  EXPECT_EQ(written(), "8 oct 2016");
  const ScopedEnvironment nothing("LC_ALL", "");
  EXPECT_EQ(written(), "08.10.2016") << "an empty variable is none";
}

TEST_F(Surroundings, may_ask_for_letters_of_their_own) {
  const ScopedEnvironment general("LANG", "sr_RS.UTF-8");
  EXPECT_EQ(written(), "8. 10. 2016.");
  DateStyles styles(icuLocale("sr_RS@latin"), "UTC");
  const Date now(std::chrono::seconds(1475965860));
  EXPECT_EQ(styles.abbreviatedRelative(now - std::chrono::hours(24), now), "pre 1 d.");
  styles = DateStyles(LinuxDeviceInfo().locale(), "UTC");
  EXPECT_EQ(styles.abbreviatedRelative(now - std::chrono::hours(24), now), "пре 1 д.");
}

TEST_F(Surroundings, that_make_no_sense_have_dates_for_people) {
  for (const char* name : {"C", "POSIX", "C.UTF-8", "xx_YY.UTF-8", "!?"}) {
    const ScopedEnvironment general("LANG", name);
    EXPECT_EQ(written(), "Oct 8, 2016") << name;
  }
}

}  // namespace
}  // namespace quillmar
