// Tree, list and sheet.
import { useState } from "preact/hooks";
import type { People } from "./api";
import { List } from "./list";
import { type Where, go } from "./place";
import { listOf, traits } from "./query";
import { Sheet, type Tab } from "./sheet";
import { t } from "./texts";
import { Tree } from "./tree";

export function Directory(props: { where: Where }) {
    const { query } = props.where;
    const [people, setPeople] = useState<People>();
    const place = query["in"] ?? "";
    const user = Number(query["user"]) || undefined;
    const show = (changed: Record<string, string | undefined>) => void go("/directory", { ...query, ...changed }, "user" in changed ? "ask" : "keep");
    const isHere = people !== undefined && place !== "" && people.trail?.at(-1)?.key === place;
    return (
        <div class={`directory${user ? " with-sheet" : ""}`}>
            <h1 class="hidden">{t("area.directory")}</h1>
            <Tree
                chosen={place}
                trail={isHere ? people.trail : undefined}
                path={isHere ? people.path : undefined}
                onChoose={key => show({ in: key, among: undefined, user: undefined, tab: undefined })}
            />
            <List
                query={listOf(query)}
                opened={user}
                onPeople={setPeople}
                onQuery={changed =>
                    show({
                        ...(changed.sort === undefined ? {} : { sort: changed.sort }),
                        ...(changed.deep === undefined ? {} : { deep: changed.deep ? "" : "0" }),
                        ...(changed.trait === undefined
                            ? {}
                            : Object.fromEntries(traits.map(trait => [trait, trait === changed.trait ? "1" : ""]))),
                    })
                }
                onOpen={id => show(id ? { user: String(id) } : { user: undefined, tab: undefined })}
            />
            {user && (
                <Sheet
                    key={user}
                    id={user}
                    tab={(query["tab"] as Tab | undefined) ?? "general"}
                    onTab={tab => show({ tab })}
                    onClose={() => show({ user: undefined, tab: undefined })}
                />
            )}
        </div>
    );
}
