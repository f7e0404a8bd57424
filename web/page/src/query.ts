// Which people a place of the directory shows, and what the server is asked for then.

/** By what lists are narrowed. */
export const traits = ["locked", "super", "no_group", "plain_password", "no_password"] as const;

export interface ListQuery {
    in: string;
    q: string;
    sort: string;
    deep: boolean;
    /** One of the traits; empty: all people. */
    trait: string;
    /** A list that names were found as. */
    among: string;
}

/** @param query  of the place. */
export const listOf = (query: Record<string, string>): ListQuery => ({
    in: query["in"] ?? "",
    q: query["q"] ?? "",
    sort: query["sort"] ?? "",
    deep: query["deep"] !== "0",
    trait: traits.find(trait => query[trait] === "1") ?? "",
    among: query["among"] ?? "",
});

/** What the server is asked for. */
export const queryOf = (query: ListQuery): Record<string, string> => ({
    ...(query.in ? { in: query.in } : {}),
    ...(query.q ? { q: query.q } : {}),
    ...(query.sort ? { sort: query.sort } : {}),
    ...(query.deep ? {} : { deep: "0" }),
    ...(query.trait ? { [query.trait]: "1" } : {}),
    ...(query.among ? { among: query.among } : {}),
});

export const peoplePath = (query: Record<string, string>) => `/users?${new URLSearchParams(query)}`;
export const placesPath = (parent: string, offset: number) => `/tree?${new URLSearchParams({ parent, offset: String(offset) })}`;
