// The extension interface that Nautilus, Nemo and Caja share, under one name each. The build says
// for which of them this is compiled.
#pragma once

#include <glib-object.h>

#if defined(HALVERN_FOR_NAUTILUS)
extern "C" {
#include <nautilus-extension.h>
}
#define HALVERN_TYPE(name) Nautilus##name
#define HALVERN_FUNCTION(name) nautilus_##name
#define HALVERN_OPERATION_COMPLETE NAUTILUS_OPERATION_COMPLETE
#elif defined(HALVERN_FOR_NEMO)
#include <libnemo-extension/nemo-file-info.h>
#include <libnemo-extension/nemo-info-provider.h>
#include <libnemo-extension/nemo-menu-provider.h>
#define HALVERN_TYPE(name) Nemo##name
#define HALVERN_FUNCTION(name) nemo_##name
#define HALVERN_OPERATION_COMPLETE NEMO_OPERATION_COMPLETE
#elif defined(HALVERN_FOR_CAJA)
#include <libcaja-extension/caja-file-info.h>
#include <libcaja-extension/caja-info-provider.h>
#include <libcaja-extension/caja-menu-provider.h>
#define HALVERN_TYPE(name) Caja##name
#define HALVERN_FUNCTION(name) caja_##name
#define HALVERN_OPERATION_COMPLETE CAJA_OPERATION_COMPLETE
#endif

namespace filemanagers {

using FileInfo = HALVERN_TYPE(FileInfo);
using InfoProvider = HALVERN_TYPE(InfoProvider);
using MenuProvider = HALVERN_TYPE(MenuProvider);
using MenuItem = HALVERN_TYPE(MenuItem);
using Menu = HALVERN_TYPE(Menu);
using OperationHandle = HALVERN_TYPE(OperationHandle);
using OperationResult = HALVERN_TYPE(OperationResult);

#if defined(HALVERN_FOR_CAJA)
using InfoProviderInterface = CajaInfoProviderIface;
using MenuProviderInterface = CajaMenuProviderIface;
#else
using InfoProviderInterface = HALVERN_TYPE(InfoProviderInterface);
using MenuProviderInterface = HALVERN_TYPE(MenuProviderInterface);
#endif

}  // namespace filemanagers
