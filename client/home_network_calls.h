#pragma once

#include "client/call.h"
#include "client/records/home_network.h"

namespace quillmar::calls {

inline constexpr Call<NoBody, HomeNetworkResponse> getHomeNetwork{"GET", "/home-network"};
inline constexpr Call<CreateHomeNetworkRequest, CreateHomeNetworkResponse> createHomeNetwork{"POST",
                                                                                             "/home-network"};
inline constexpr Call<UpdateHomeNetworkIPRequest, UpdateHomeNetworkIPResponse> updateHomeNetworkIP{
    "POST", "/home-network/update-ip"};

}  // namespace quillmar::calls
