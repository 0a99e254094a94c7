// SPDX-License-Identifier: Apache-2.0
// The columns of configured things in a listing; of a collector its meter stands before its own fields.
#pragma once

#include <gateway/form/columns.h>

namespace tav::form {

inline constexpr cColumn kInterfaceColumns[] = {{"name", "NAME"}, {"enabled", "ENABLED"}, {"options", "OPTIONS"}};
inline constexpr cColumn kMeterColumns[] = {{"meterID", "METER"},
                                            {"addr", "ADDRESS"},
                                            {"medium", "MEDIUM", eForm::Medium},
                                            {"mfct", "MAKER"},
                                            {"interface-name", "INTERFACE"},
                                            {"interface-protocol", "PROTOCOL"},
                                            {"interface-options", "OPTIONS"},
                                            {"push-enabled", "PUSH"}};
inline constexpr cColumn kCollectorColumns[] = {{"meterID", "METER"},
                                                {"addr", "COLLECTOR"},
                                                {"activation", "ACTIVE"},
                                                {"event-type", "EVENT"},
                                                {"countRP", "KEPT", eForm::Number},
                                                {"obis-ids", "OBIS"},
                                                {"push-target-name", "PUSH TARGET"}};
inline constexpr cColumn kPushTargetColumns[] = {{"name", "NAME"},       {"idx", "NUMBER", eForm::Number},
                                                 {"enabled", "ENABLED"}, {"protocoll", "SCHEME"},
                                                 {"host", "HOST"},       {"uri", "PATH"}};
inline constexpr cColumn kTemplateColumns[] = {
    {"name", "NAME"}, {"idx", "NUMBER", eForm::Number}, {"enable", "ENABLED"}};

}  // namespace tav::form
