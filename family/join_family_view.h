#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "app/session/environment.h"
#include "client/records/family.h"
#include "family/qr_scanner_view.h"
#include "foundation/raw_enum.h"
#include "foundation/result.h"
#include "foundation/secret.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

enum class JoinFamilyStage { code, account };

template <>
inline constexpr std::array rawNames<JoinFamilyStage> =
    rawCases<JoinFamilyStage>({{JoinFamilyStage::code, "code"}, {JoinFamilyStage::account, "account"}});

// Lets a second parent join a family. First the invite code is checked, then an account is made, which also
// signs in. The login is not remembered.
class JoinFamilyView final : public ScreenModel {
 public:
  explicit JoinFamilyView(Environment& environment, std::string initialInviteCode = {});

  const std::string initialInviteCode;
  // Always upper case; otherwise as typed.
  Input<std::string> inviteCode{*this, "inviteCode"};
  Input<std::string> email{*this, "email"};
  Input<Secret> password{*this, "password"};
  Input<Secret> confirmPassword{*this, "confirmPassword"};
  Input<std::string> displayName{*this, "displayName"};
  Published<bool> isValidating{*this, "isValidating", false};
  Published<bool> isJoining{*this, "isJoining", false};
  // nullopt before the first check, during a check, and after the person goes back.
  Published<std::optional<ValidateInviteResponse>> validationResult{*this, "validationResult"};
  ErrorAlert errorAlert{*this};
  Sheet<QRScannerView> showScanner{*this, "showScanner", [this] { return makeScanner(); }};

  Derived<JoinFamilyStage> stage{*this, "stage", [this] { return computeStage(); }};
  Derived<bool> canJoin{*this, "canJoin", [this] { return computeCanJoin(); }};
  // Why the checked code is invalid; nullopt if there is no warning.
  Derived<std::optional<std::string>> warning{*this, "warning", [this] { return computeWarning(); }};
  Derived<std::optional<std::string>> familyLine{*this, "familyLine", [this] { return computeFamilyLine(); }};
  Derived<std::optional<std::string>> inviterLine{*this, "inviterLine",
                                                  [this] { return computeInviterLine(); }};
  // The line under the repeated password; shown once something is repeated.
  Derived<bool> showsPasswordMatch{*this, "showsPasswordMatch",
                                   [this] { return !confirmPassword().empty(); }};
  Derived<std::string> passwordMatchText{
      *this, "passwordMatchText",
      [this] { return std::string(passwordsMatch() ? "Passwords match" : "Passwords don't match"); }};
  Derived<std::string> passwordMatchIcon{
      *this, "passwordMatchIcon",
      [this] { return std::string(passwordsMatch() ? "checkmark.circle.fill" : "xmark.circle.fill"); }};
  Derived<std::string> passwordMatchColor{*this, "passwordMatchColor", [this] {
                                            return std::string(passwordsMatch() ? "brandGreen" : "brandRed");
                                          }};

  Text title{*this, "title", "Join Family"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Text headerIcon{*this, "headerIcon", "person.badge.plus"};
  Text heading{*this, "heading", "Join a Family"};
  Text explanation{*this, "explanation", "Enter an invite code or scan a QR code from the primary parent"};
  Text inviteCodeTitle{*this, "inviteCodeTitle", "Invite Code"};
  Text inviteCodePlaceholder{*this, "inviteCodePlaceholder", "Enter 6-character code"};
  Text validateTitle{*this, "validateTitle", "Validate Code"};
  Text orText{*this, "orText", "or"};
  Text scanIcon{*this, "scanIcon", "qrcode.viewfinder"};
  Text scanTitle{*this, "scanTitle", "Scan QR Code"};
  Text warningIcon{*this, "warningIcon", "exclamationmark.triangle.fill"};
  Text validIcon{*this, "validIcon", "checkmark.circle.fill"};
  Text validTitle{*this, "validTitle", "Valid Invitation"};
  Text changeTitle{*this, "changeTitle", "Change"};
  Text accountHeading{*this, "accountHeading", "Create Your Account"};
  Text displayNameTitle{*this, "displayNameTitle", "Your Name"};
  Text displayNamePlaceholder{*this, "displayNamePlaceholder", "How should we display you?"};
  Text emailTitle{*this, "emailTitle", "Email"};
  Text emailPlaceholder{*this, "emailPlaceholder", "name@example.com"};
  Text passwordTitle{*this, "passwordTitle", "Password"};
  Text passwordPlaceholder{*this, "passwordPlaceholder", "At least 6 characters"};
  Text confirmPasswordTitle{*this, "confirmPasswordTitle", "Confirm Password"};
  Text confirmPasswordPlaceholder{*this, "confirmPasswordPlaceholder", "Re-enter password"};
  Text joinTitle{*this, "joinTitle", "Join Family"};

  Action<> cancel{*this, "cancel", [this] { dismiss(); }};
  Action<> validateCode{
      *this, "validateCode", [this] { checkCode(); },
      [this] { return stage() == JoinFamilyStage::code && isLongEnough() && !isValidating(); }};
  Action<> scanQRCode{*this, "scanQRCode", [this] { showScanner = true; },
                      [this] { return stage() == JoinFamilyStage::code; }};
  Action<> changeCode{*this, "changeCode", [this] { startOver(); },
                      [this] { return stage() == JoinFamilyStage::account; }};
  Action<> join{*this, "join", [this] { startJoining(); }, [this] { return canJoin() && !isJoining(); }};
  KeyCommands keys{*this, {{Command::back, cancel}}};

 private:
  void onAppear() override;
  std::shared_ptr<QRScannerView> makeScanner();
  void handleScan(const std::string& text);

  bool isLongEnough() const;
  bool isInvitationValid() const;
  bool passwordsMatch() const { return password() == confirmPassword(); }
  JoinFamilyStage computeStage() const;
  bool computeCanJoin() const;
  std::optional<std::string> computeWarning() const;
  std::optional<std::string> computeFamilyLine() const;
  std::optional<std::string> computeInviterLine() const;

  void checkCode();
  void handleValidation(const Result<ValidateInviteResponse>& result);
  void startOver();
  void startJoining();
  void handleJoining(const Result<JoinFamilyResponse>& result);

  Environment& environment_;
  Dispatch& dispatch_;
  Subscription upperCase_;
};

}  // namespace quillmar
