#pragma once

#include <cstddef>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace web {

// One-time codes as apps make them from a secret and the time (RFC 6238): six digits of HMAC-SHA-1, others for each
// step of 30 seconds.

inline constexpr int kTotpSeconds = 30;

/// A secret of 160 random bits, in Base32. @throws management::Error (failed).
std::string NewTotpSecret();
/// The secret as apps take it: otpauth://totp/….
std::string TotpUri(std::string_view secret, std::string_view login);
/// The code of a step, counted from 1970 on. @param secret  in Base32. @throws management::Error (failed) for another
/// one.
std::string TotpCode(std::string_view secret, int step);
/// The step that a code is of, which is the present one or one beside it; nothing for a wrong code. Blanks in the code
/// do not count. @throws as TotpCode.
std::optional<int> StepOfCode(std::string_view secret, std::string_view code, std::time_t now);

/// Codes that stand in for a device that was lost, each good for once.
struct RecoveryCodes {
    std::vector<std::string> codes;   ///< as they are shown
    std::vector<std::string> digests; ///< as they are kept
};

/// Ten new ones, each of 80 random bits. @throws management::Error (failed).
RecoveryCodes NewRecoveryCodes();
/// As it is kept. Case, blanks and dashes in the code do not count.
std::string RecoveryDigest(std::string_view code);

} // namespace web
