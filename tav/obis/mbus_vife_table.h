// SPDX-License-Identifier: Apache-2.0
// What a combinable VIFE of an M-Bus record (EN 13757-3) adds to a value, in the order of the codes. Internal to the
// library. A code is a byte without its extension bit; there is a row for every one of the 128.
#pragma once

#include <tav/obis/mbus_vib_helper.h>

namespace tav::mbus {

// Codes that carry a size are told twice, as what they are and as not recognised: rules know the pair.
enum eVifeForm : bool { eOnce = false, eAndNotRecognised = true };

struct cVifeRow {
  unsigned char first;
  unsigned char last;
  eUnitScalerExtension extension;
  eVifeForm form = eOnce;
  int scaler = 0;  // added
};

// clang-format off

// Combinable (orthogonal) VIFE table.
inline constexpr cVifeRow kVifeRows[] = {
  {0x00, 0x1F, eVifeNotRecognised                                  },  // object actions, record errors
  {0x20, 0x20, eVifePerSecond                                      },
  {0x21, 0x21, eVifePerMinute                                      },
  {0x22, 0x22, eVifePerHour                                        },
  {0x23, 0x23, eVifePerDay                                         },
  {0x24, 0x24, eVifePerWeek                                        },
  {0x25, 0x25, eVifePerMonth                                       },
  {0x26, 0x26, eVifePerYear                                        },
  {0x27, 0x27, eVifePerRevolution                                  },
  {0x28, 0x28, eVifePerInputPulse0                                 },
  {0x29, 0x29, eVifePerInputPulse1                                 },
  {0x2A, 0x2A, eVifePerOutputPulse0                                },
  {0x2B, 0x2B, eVifePerOutputPulse1                                },
  {0x2C, 0x2C, eVifePerLitre                                       },
  {0x2D, 0x2D, eVifePerCubicMetre                                  },
  {0x2E, 0x2E, eVifePerKilogram                                    },
  {0x2F, 0x2F, eVifePerKelvin                                      },
  {0x30, 0x30, eVifePerKilowattHour                                },
  {0x31, 0x31, eVifePerGigajoule                                   },
  {0x32, 0x32, eVifePerKilowatt                                    },
  {0x33, 0x33, eVifePerKelvinLitre                                 },
  {0x34, 0x34, eVifePerVolt                                        },
  {0x35, 0x35, eVifePerAmpere                                      },
  {0x36, 0x36, eVifeTimesSecond                                    },
  {0x37, 0x37, eVifeTimesSecondPerVolt                             },
  {0x38, 0x38, eVifeTimesSecondPerAmpere                           },
  {0x39, 0x39, eVifeStartOf                                        },
  {0x3A, 0x3A, eVifeUncorrected                                    },
  {0x3B, 0x3B, eVifePositiveOnly                                   },
  {0x3C, 0x3C, eVifeNegativeOnly                                   },
  {0x3D, 0x3D, eVifeNonMetric                                      },
  {0x3E, 0x3F, eVifeNotRecognised                                  },  // value at base conditions, OBIS declaration
  {0x40, 0x40, eVifeLowerLimit                                     },
  {0x41, 0x41, eVifeLowerLimitCount                                },
  {0x42, 0x42, eVifeLowerLimitFirstBegin                           },
  {0x43, 0x43, eVifeLowerLimitFirstEnd                             },
  {0x44, 0x45, eVifeNotRecognised                                  },  // reserved
  {0x46, 0x46, eVifeLowerLimitLastBegin                            },
  {0x47, 0x47, eVifeLowerLimitLastEnd                              },
  {0x48, 0x48, eVifeUpperLimit                                     },
  {0x49, 0x49, eVifeUpperLimitCount                                },
  {0x4A, 0x4A, eVifeUpperLimitFirstBegin                           },
  {0x4B, 0x4B, eVifeUpperLimitFirstEnd                             },
  {0x4C, 0x4D, eVifeNotRecognised                                  },  // reserved
  {0x4E, 0x4E, eVifeUpperLimitLastBegin                            },
  {0x4F, 0x4F, eVifeUpperLimitLastEnd                              },
  {0x50, 0x53, eVifeLowerLimitFirstDuration, eAndNotRecognised     },
  {0x54, 0x57, eVifeLowerLimitLastDuration,  eAndNotRecognised     },
  {0x58, 0x5B, eVifeUpperLimitFirstDuration, eAndNotRecognised     },
  {0x5C, 0x5F, eVifeUpperLimitLastDuration,  eAndNotRecognised     },
  {0x60, 0x63, eVifeFirstDuration,           eAndNotRecognised     },
  {0x64, 0x67, eVifeLastDuration,            eAndNotRecognised     },
  {0x68, 0x68, eVifeDuringLowerLimit                               },
  {0x69, 0x69, eVifeLeakage                                        },
  {0x6A, 0x6A, eVifeFirstBegin                                     },
  {0x6B, 0x6B, eVifeFirstEnd                                       },
  {0x6C, 0x6C, eVifeDuringUpperLimit                               },
  {0x6D, 0x6D, eVifeOverflow                                       },
  {0x6E, 0x6E, eVifeLastBegin                                      },
  {0x6F, 0x6F, eVifeLastEnd                                        },
  {0x70, 0x70, eVifeScalerCorrection,        eAndNotRecognised, -6 },
  {0x71, 0x71, eVifeScalerCorrection,        eAndNotRecognised, -5 },
  {0x72, 0x72, eVifeScalerCorrection,        eAndNotRecognised, -4 },
  {0x73, 0x73, eVifeScalerCorrection,        eAndNotRecognised, -3 },
  {0x74, 0x74, eVifeScalerCorrection,        eAndNotRecognised, -2 },
  {0x75, 0x75, eVifeScalerCorrection,        eAndNotRecognised, -1 },
  {0x76, 0x76, eVifeScalerCorrection,        eAndNotRecognised,  0 },
  {0x77, 0x77, eVifeScalerCorrection,        eAndNotRecognised,  1 },
  {0x78, 0x78, eVifeAddThousandths                                 },
  {0x79, 0x79, eVifeAddHundredths                                  },
  {0x7A, 0x7A, eVifeAddTenths                                      },
  {0x7B, 0x7B, eVifeAddUnits                                       },
  {0x7C, 0x7C, eVifeNotRecognised                                  },  // extension of this table
  {0x7D, 0x7D, eVifeScalerPlus3,             eOnce,              3 },
  {0x7E, 0x7E, eVifeFutureValue                                    },
  {0x7F, 0x7F, eVifeManufacturerSpecific                           },
};
// clang-format on

}  // namespace tav::mbus
