#include "engine/symlink_resolution.h"

#include "engine/error_path.h"
#include "util/strings_table.h"

namespace marigold {

bool TryResolveSymLinkFile(EngineContext& context, std::string& path, ItemAttributes& attributes,
                           bool& isSymLink) {
  auto target = context.fs.ResolvePath(path);
  if (!target || target.Value() == path) {
    context.errors.RecordItemError({GLS("Can't resolve the SYM link"), " \"", path, "\""});
    return false;
  }
  const std::string& resolved = target.Value();
  if (LastPathComponent(resolved) != LastPathComponent(path)) {
    context.errors.RecordItemError(
        {GLS("Cannot resolve the SymLink\r"), path, GLS("\r\rbecause it points to a Target file\r"), resolved,
         GLS("\r\rwith a different file name. This could cause conflicts when resolving the SymLink and copying the "
             "Target file."),
         "\r", GLS("Please use SymLinks and Target files with equal names")});
    return false;
  }
  if (context.state.bootItemsToDontCopyArray.contains(resolved)) return false;
  auto targetAttributes = context.fs.GetAttributes(resolved);
  if (!targetAttributes) {
    // Gone between the two looks: the same as a link that leads nowhere.
    context.errors.RecordItemError({GLS("Can't resolve the SYM link"), " \"", path, "\""});
    return false;
  }
  attributes = std::move(targetAttributes).Value();
  isSymLink = attributes.kind == ItemKind::kSymlink;
  path = resolved;
  return true;
}

}  // namespace marigold
