// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/ReleaseSuffix.hpp"

#include <algorithm>
#include <span>

namespace SmbusService {

namespace {

bool isSendByte(const Step& step) { return step.operation.kind == OperationKind::kSendByte; }

bool addresses(std::span<const Step> steps, const Step& like) {
  return std::any_of(steps.begin(), steps.end(),
                     [&like](const Step& step) { return step.sameDevice(like); });
}

std::span<const Step> leadingRun(const Transaction& transaction) {
  const auto end = std::find_if_not(transaction.begin(), transaction.end(), isSendByte);
  return {transaction.begin(), end};
}

size_t suffixStart(const Transaction& transaction, std::span<const Step> leading) {
  const auto end = std::find_if(
      transaction.rbegin(), transaction.rend(),
      [leading](const Step& step) { return !isSendByte(step) || !addresses(leading, step); });
  return static_cast<size_t>(transaction.rend() - end);
}

}  // namespace

std::vector<const Step*> stepsToRelease(const Transaction& transaction, size_t failed) {
  const std::span<const Step> leading = leadingRun(transaction);
  const std::span<const Step> reached = leading.first(std::min(leading.size(), failed + 1));
  std::vector<const Step*> steps;
  for (size_t i = std::max(suffixStart(transaction, leading), failed + 1); i < transaction.size();
       ++i) {
    const Step& step = transaction[i];
    if (addresses(reached, step) || step.operation.command == 0) {
      steps.push_back(&step);
    }
  }
  return steps;
}

}  // namespace SmbusService
