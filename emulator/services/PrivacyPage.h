// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"

/// getOEMPrivacyColorInfoByType: the privacy policy of a product line as an HTML page.
///
/// The path ends in "/{oem}/{language}/{target}/{type}". The oem, which may itself hold slashes,
/// stands in the page. Languages that contain "zh-cn" get Chinese, all others English. The one
/// target is "privacy"; the type is ignored, clients send a literal "%4" for it.
Answer privacyPage(const Request &request);

/// What stands in the body of that page.
QString privacyText(const QString &oem, bool chinese);
