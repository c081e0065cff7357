#include "identity/register_view.h"

#include <array>
#include <optional>
#include <string_view>

#include "app/session/role_manager.h"
#include "client/account_calls.h"
#include "client/network_service.h"
#include "foundation/text.h"
#include "identity/auth_state.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

constexpr std::size_t shortestPhone = 10;
constexpr std::size_t shortestPassword = 6;
constexpr std::size_t longPassword = 8;

struct Grade {
  std::string_view label;
  std::string_view color;
};

// Indexed by strength.
constexpr auto grades = std::to_array<Grade>({{"Weak", "brandRed"},
                                              {"Weak", "brandRed"},
                                              {"Fair", "brandOrange"},
                                              {"Good", "systemOrange"},
                                              {"Strong", "brandGreen"}});
constexpr int strengthBarCount = grades.size() - 1;

const Grade& gradeOf(int strength) { return grades[static_cast<std::size_t>(strength)]; }

bool isSymbolOrPunctuation(char32_t c) { return isSymbol(c) || isPunctuation(c); }

}  // namespace

int passwordStrength(std::string_view password) {
  const auto length = characterCount(password);
  return static_cast<int>(length >= shortestPassword) + static_cast<int>(length >= longPassword) +
         static_cast<int>(anyCodePoint(password, isDecimalDigit)) +
         static_cast<int>(anyCodePoint(password, isSymbolOrPunctuation));
}

RegisterView::RegisterView(Environment& environment)
    : ScreenModel("RegisterView"), environment_(environment) {}

void RegisterView::onAppear() {
  headerOpacity = 1.0;
  formOpacity = 1.0;
  formOffset = 0.0;
}

bool RegisterView::computeIsFormValid() const {
  return !name().empty() && email().find('@') != std::string::npos &&
         characterCount(phone()) >= shortestPhone && characterCount(password().text()) >= shortestPassword &&
         password() == confirmPassword();
}

std::string RegisterView::computeStrengthLabel() const { return std::string(gradeOf(strength()).label); }
std::string RegisterView::computeStrengthColor() const { return std::string(gradeOf(strength()).color); }

std::vector<StrengthBar> RegisterView::computeStrengthBars() const {
  const int reached = strength();
  std::vector<StrengthBar> bars;
  bars.reserve(static_cast<std::size_t>(strengthBarCount));
  for (int i = 0; i < strengthBarCount; ++i) {
    bars.push_back(reached > i ? StrengthBar{computeStrengthColor(), 1.0}
                               : StrengthBar{"statusOffline", 0.3});
  }
  return bars;
}

RegisterRequest RegisterView::account() const {
  const auto& region = environment_.roleManager()->selectedRegion();
  return {.email = email(),
          .password = password(),
          .phone = phone(),
          .name = name(),
          .region = region ? std::optional(std::string(rawValue(*region))) : std::nullopt};
}

void RegisterView::startRegistration() {
  isLoading = true;
  errorAlert.message = std::string();
  environment_.networkService()->send(
      calls::registerAccount, account(),
      hoppingToMain(environment_.platform().dispatch,
                    weakly([this](const Result<AuthResponse>& result) { handleRegistration(result); })));
}

void RegisterView::handleRegistration(const Result<AuthResponse>& result) {
  isLoading = false;
  if (result.ok()) {
    environment_.authState()->saveLogin(result.value());
    dismiss();
  } else {
    errorAlert.show(result.error());
  }
}

}  // namespace quillmar
