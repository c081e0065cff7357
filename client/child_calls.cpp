#include "client/child_calls.h"

#include "foundation/filled_text.h"

namespace quillmar::calls {

constinit const CallLog<NoBody, ChildrenResponse> getChildrenLog{
    .lines = {.write = &Log::system,
              .noRegion = "[NetworkService] getChildren failed: No region configured",
              .error = "[NetworkService] getChildren - error: %@",
              .noAnswer = "[NetworkService] getChildren - error: %@",
              .status = "[NetworkService] getChildren - status: %d",
              .response = "[NetworkService] getChildren - response: %@",
              .refusal = "[NetworkService] getChildren - decode error: %@"},
    .sending =
        [](std::string_view url, const NoBody& /*nothing*/) {
          return filled("[NetworkService] getChildren - URL: %@", {url});
        },
    .success =
        [](const ChildrenResponse& answer) {
          return filled("[NetworkService] getChildren - decoded %d children",
                        {std::to_string(answer.children.size())});
        },
};

constinit const CallLog<CreateChildRequest, ChildProfileWithDevices> createChildLog{
    .lines = {.write = &Log::system,
              .noRegion = "[NetworkService] createChild failed: No region configured",
              .encodeError = "[NetworkService] createChild - encode error: %@",
              .error = "[NetworkService] createChild - error: %@",
              .noAnswer = "[NetworkService] createChild - error: %@",
              .status = "[NetworkService] createChild - status: %d",
              .response = "[NetworkService] createChild - response: %@",
              .refusal = "[NetworkService] createChild - decode error: %@"},
    .sending =
        [](std::string_view url, const CreateChildRequest& child) {
          return filled("[NetworkService] createChild - URL: %@, name: %@", {url, child.name});
        },
    .success =
        [](const ChildProfileWithDevices& child) {
          return filled("[NetworkService] createChild - success: %@ (id: %@)", {child.name, child.id});
        },
};

}  // namespace quillmar::calls
