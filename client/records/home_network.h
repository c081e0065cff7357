#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/record.h"

namespace quillmar {

struct HomeNetwork {
  std::string id;
  std::string parentId;
  std::string name;
  std::optional<std::string> publicIP;
  bool isActive = false;
  std::string createdAt;
  std::string updatedAt;
};

template <>
inline constexpr auto wire<HomeNetwork> = record(required("id", &HomeNetwork::id),
                                                 required("parent_id", &HomeNetwork::parentId),
                                                 required("name", &HomeNetwork::name),
                                                 optional("public_ip", &HomeNetwork::publicIP),
                                                 required("is_active", &HomeNetwork::isActive),
                                                 required("created_at", &HomeNetwork::createdAt),
                                                 required("updated_at", &HomeNetwork::updatedAt));

// Unlike in a child's policy, both lists are required.
struct HomeNetworkPolicy {
  std::string id;
  std::string homeNetworkId;
  std::string parentId;
  bool isBlocked = false;
  std::string blockMode;
  std::vector<std::string> blockedDomains;
  std::vector<std::string> allowedDomains;
  std::string createdAt;
  std::string updatedAt;
};

template <>
inline constexpr auto wire<HomeNetworkPolicy> = record(
    required("id", &HomeNetworkPolicy::id), required("home_network_id", &HomeNetworkPolicy::homeNetworkId),
    required("parent_id", &HomeNetworkPolicy::parentId),
    required("is_blocked", &HomeNetworkPolicy::isBlocked),
    required("block_mode", &HomeNetworkPolicy::blockMode),
    required("blocked_domains", &HomeNetworkPolicy::blockedDomains),
    required("allowed_domains", &HomeNetworkPolicy::allowedDomains),
    required("created_at", &HomeNetworkPolicy::createdAt),
    required("updated_at", &HomeNetworkPolicy::updatedAt));

struct HomeNetworkResponse {
  std::optional<HomeNetwork> homeNetwork;  // nullopt: none set up yet
  std::optional<HomeNetworkPolicy> policy;
  std::string currentIP;   // the public address of this request, as the service saw it
  bool ipMatches = false;  // it equals the stored one
};

template <>
inline constexpr auto wire<HomeNetworkResponse> = record(
    optional("home_network", &HomeNetworkResponse::homeNetwork),
    optional("policy", &HomeNetworkResponse::policy), required("current_ip", &HomeNetworkResponse::currentIP),
    required("ip_matches", &HomeNetworkResponse::ipMatches));

struct CreateHomeNetworkRequest {
  std::optional<std::string> name;
  bool confirm = false;
};

template <>
inline constexpr auto wire<CreateHomeNetworkRequest> =
    record(optional("name", &CreateHomeNetworkRequest::name),
           required("confirm", &CreateHomeNetworkRequest::confirm));

// Unlike in the answer of a lookup, both members are required.
struct CreateHomeNetworkResponse {
  std::string message;
  HomeNetwork homeNetwork;
  HomeNetworkPolicy policy;
};

template <>
inline constexpr auto wire<CreateHomeNetworkResponse> =
    record(required("message", &CreateHomeNetworkResponse::message),
           required("home_network", &CreateHomeNetworkResponse::homeNetwork),
           required("policy", &CreateHomeNetworkResponse::policy));

// The address is not included: the service uses the request's source address.
struct UpdateHomeNetworkIPRequest {
  bool confirm = false;
};

template <>
inline constexpr auto wire<UpdateHomeNetworkIPRequest> =
    record(required("confirm", &UpdateHomeNetworkIPRequest::confirm));

struct UpdateHomeNetworkIPResponse {
  std::string message;
  std::string publicIP;
  std::string updatedAt;
};

template <>
inline constexpr auto wire<UpdateHomeNetworkIPResponse> =
    record(required("message", &UpdateHomeNetworkIPResponse::message),
           required("public_ip", &UpdateHomeNetworkIPResponse::publicIP),
           required("updated_at", &UpdateHomeNetworkIPResponse::updatedAt));

}  // namespace quillmar
