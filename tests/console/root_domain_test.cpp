#include "console/root_domain.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "testing/live_memory.h"

namespace quillmar {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

void expectSites(const Pairs& pairs) {
  for (const auto& [name, site] : pairs) {
    EXPECT_EQ(rootDomain(name), site) << name;
    std::string storage;
    EXPECT_EQ(rootDomain(name, storage), site) << name;
  }
}

TEST(RootDomain, a_site_is_the_last_two_labels) {
  expectSites({{"a.b.example.com", "example.com"},
               {"www.example.com", "example.com"},
               {"x.shop.co.de", "co.de"},
               {"shop.co.de", "co.de"}});
}

TEST(RootDomain, under_a_two_label_ending_a_site_is_three_labels) {
  expectSites({{"shop.example.co.uk", "example.co.uk"},
               {"shop.example.com.uk", "example.com.uk"},
               {"example.com.au", "example.com.au"},
               {"a.b.c.example.govt.nz", "example.govt.nz"},
               {"x.in.in", "x.in.in"},
               {"y.x.in.in", "x.in.in"},
               {"a.id.id", "a.id.id"},
               {"a.b.co.co", "b.co.co"}});
}

TEST(RootDomain, two_labels_are_a_site_even_if_both_are_listed) {
  expectSites({{"example.com", "example.com"}, {"co.uk", "co.uk"}, {"Co.UK", "co.uk"}});
}

TEST(RootDomain, a_name_of_fewer_than_two_labels_is_its_own_site_in_lower_case) {
  expectSites({{"localhost", "localhost"},
               {"LocalHost", "localhost"},
               {"localhost.", "localhost."},
               {".Localhost", ".localhost"},
               {"", ""},
               {".", "."},
               {"..", ".."},
               {"...", "..."}});
}

TEST(RootDomain, empty_labels_are_ignored) {
  expectSites({{"www.example.com.", "example.com"},
               {".example.com", "example.com"},
               {"example..com", "example.com"},
               {"Example...Com..", "example.com"},
               {"a..example.co..uk", "example.co.uk"},
               {"a.example..co.uk.", "example.co.uk"},
               {"..co..uk..", "co.uk"}});
}

TEST(RootDomain, letters_become_lower_case) {
  expectSites({{"WWW.Example.COM", "example.com"},
               {"Shop.Example.Co.Uk", "example.co.uk"},
               {"EXAMPLE.com", "example.com"},
               {"BÜCHER.Example", "bücher.example"},
               {"www.ΌΣΟΣ.GR", "όσοσ.gr"},
               {"ÄPFEL", "äpfel"},
               {"Ä.www.EXAMPLE.com", "example.com"},
               {"www.Bücher..CO.UK", "bücher.co.uk"}});
}

TEST(RootDomain, labels_are_separated_only_by_dots) {
  expectSites({{"a b.c d.e f", "c d.e f"},
               {"<b>.evil\n.example\t", "evil\n.example\t"},
               {"192.0.2.7", "2.7"},
               {"https://www.example.com/x.y", "com/x.y"}});
}

TEST(RootDomain, a_label_that_starts_with_a_listed_one_is_not_listed) {
  expectSites({{"a.b.coo.uk", "coo.uk"},
               {"a.b.c.uk", "c.uk"},
               {"a.b.co.ukk", "co.ukk"},
               {"a.b.govts.nz", "govts.nz"},
               {std::string("a.b.co\0.uk", 10), std::string("co\0.uk", 6)}});
}

TEST(RootDomain, all_endings_of_the_two_lists_are_recognised) {
  const std::vector<std::string> secondLevel{"com", "co", "org",  "net",  "edu", "gov", "ac",
                                             "or",  "ne", "go",   "govt", "gob", "gub", "me",
                                             "web", "in", "info", "biz",  "asn", "id"};
  const std::vector<std::string> countries{"au", "uk", "nz", "br", "jp", "cn", "in", "za", "mx", "sg",
                                           "hk", "my", "id", "ph", "th", "tw", "kr", "vn", "il", "tr",
                                           "sa", "ae", "ar", "co", "pe", "ve", "cl", "ec", "uy", "py",
                                           "bo", "ke", "tz", "ug", "ng", "eg", "pk", "bd", "np", "lk"};
  ASSERT_EQ(secondLevel.size(), 20U);
  ASSERT_EQ(countries.size(), 40U);
  for (const auto& second : secondLevel) {
    for (const auto& country : countries) {
      EXPECT_EQ(rootDomain("www.site." + second + "." + country), "site." + second + "." + country);
    }
    EXPECT_EQ(rootDomain("www.site." + second + ".de"), second + ".de");
  }
  for (const auto& country : countries) {
    EXPECT_EQ(rootDomain("www.site.other." + country), "other." + country);
  }
}

TEST(RootDomain, a_site_is_its_own_site) {
  for (const std::string name : {"a.b.example.com", "shop.example.co.uk", "..", "LOCALHOST", "x..Y.Z."}) {
    EXPECT_EQ(rootDomain(rootDomain(name)), rootDomain(name)) << name;
  }
}

TEST(RootDomain, a_site_found_unchanged_in_the_name_is_not_copied) {
  for (const std::string_view name :
       {"www.example.com", "shop.example.co.uk", "example.com.", "WWW.example.com", "localhost"}) {
    std::string storage = "untouched";
    const auto site = rootDomain(name, storage);
    EXPECT_GE(site.data(), name.data()) << name;
    EXPECT_LE(site.data() + site.size(), name.data() + name.size()) << name;
    EXPECT_EQ(storage, "untouched");
  }
}

TEST(RootDomain, a_name_of_letters_costs_at_most_one_allocation) {
  for (const std::string name :
       {"www.a-rather-long-name-of-a-site.example.com", "WWW.A-Rather-Long-Name-Of-A-Site.Example.COM",
        "www.a-rather-long-name-of-a-site..co..uk", "A-RATHER-LONG-NAME-WITHOUT-A-SINGLE-DOT"}) {
    const std::size_t before = allocations();
    const std::string site = rootDomain(name);
    EXPECT_LE(allocations() - before, 1U) << site;
  }
}

TEST(RootDomain, handles_a_name_of_64_kB) {
  const std::string label(65536, 'A');
  EXPECT_EQ(rootDomain(label), std::string(65536, 'a'));
  EXPECT_EQ(rootDomain(label + ".example.com"), "example.com");
  EXPECT_EQ(rootDomain(std::string(65536, '.')), std::string(65536, '.'));
}

}  // namespace
}  // namespace quillmar
