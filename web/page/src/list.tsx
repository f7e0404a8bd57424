// People.
import { useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import { type People, type Person, Problem, listPeople, may } from "./api";
import { type Action, allowed, openContext } from "./context";
import { Trouble, askFor, change, sentence } from "./dialogs";
import { Icon } from "./icons";
import { useKey } from "./keys";
import { askNames } from "./names";
import { askAdd, askFields, askMove, askPasswords, askPlan, askRole, askUser, carry, changePeopleOrSay, cut, deletePeople } from "./people";
import { argumentOf } from "./pickers";
import { go, useChanges } from "./place";
import { type ListQuery, queryOf, traits } from "./query";
import { Scroller, steps } from "./scroller";
import { Selection } from "./selection";
import { counted, t } from "./texts";

const kPage = 200;
const kLine = 30;
const columns = ["name", "login", "department", "title", "mobile", "email"] as const;

export function List(props: {
    query: ListQuery;
    opened: number | undefined;
    onPeople: (people: People) => void;
    onQuery: (query: Partial<ListQuery>) => void;
    /** @param id  undefined to open nobody. */
    onOpen: (id: number | undefined) => void;
}) {
    const { query } = props;
    const box = useRef<HTMLElement>(null);
    const [isOutdated, setOutdated] = useState(false);
    const [renewals, setRenewals] = useState(0);
    // While somebody is at the list, rows stay where they are: what is shown of them is read anew, and no more.
    const changes = useChanges(isElsewhere => {
        const isKept = isElsewhere && (selected.count > 0 || box.current?.matches(":hover, :focus-within") === true);
        if (isKept) {
            asked.current = new Set();
            setOutdated(true);
            setVersion(before => before + 1);
        }
        return !isKept;
    });
    const [people, setPeople] = useState<People>();
    const [trouble, setTrouble] = useState("");
    const rows = useRef<(Person | undefined)[]>([]);
    const asked = useRef(new Set<number>());
    const [version, setVersion] = useState(0);
    const [active, setActive] = useState(0);
    const [selected, setSelected] = useState(Selection.nobody);
    const anchor = useRef(0);
    /** What was listed last, and how many these were. */
    const last = useRef<{ text: string; total: number }>();
    const text = JSON.stringify(queryOf(query));
    void version;

    const take = (page: People) => {
        page.rows.forEach((row, i) => {
            rows.current[page.offset + i] = row;
        });
        setVersion(before => before + 1);
    };
    // An answer that is there already is shown with the first look at the page.
    useLayoutEffect(() => {
        const abort = new AbortController();
        listPeople(queryOf(query), abort.signal).then(
            page => {
                // Who is no longer in the list cannot be seen to be selected.
                const isShort = last.current?.text === text && last.current.total !== page.total;
                last.current = { text, total: page.total };
                isShort && setSelected(Selection.nobody);
                rows.current = [];
                asked.current = new Set([0]);
                setPeople(page);
                setOutdated(false);
                setTrouble("");
                setActive(before => Math.min(before, Math.max(0, page.total - 1)));
                take(page);
                props.onPeople(page);
            },
            error => {
                if (!(error instanceof DOMException)) {
                    setTrouble(sentence(error));
                }
            },
        );
        return () => abort.abort();
    }, [text, changes, renewals]);
    useEffect(() => {
        setSelected(Selection.nobody);
        setActive(0);
    }, [text]);

    const isAny = selected.count > 0;
    useLayoutEffect(() => {
        // What acts on those selected is gone, and with it the focus that it may have had.
        if (!isAny && people && document.activeElement === document.body) {
            document.getElementById("people")?.focus();
        }
    }, [isAny]);

    const load = async (offset: number) => {
        if (!people || asked.current.has(offset)) {
            return;
        }
        asked.current.add(offset);
        const { result } = people;
        const listed = last.current;
        // An answer that arrives when another list is shown is ignored.
        const isLate = () => last.current !== listed;
        try {
            const page = await listPeople({ result, offset: String(offset), limit: String(kPage) });
            isLate() || take(page);
        } catch (error) {
            if (isLate()) {
                return;
            }
            asked.current.delete(offset);
            if (error instanceof Problem && error.code === "result_gone") {
                const page = await listPeople(queryOf(query));
                if (!isLate()) {
                    asked.current = new Set([0]);
                    setPeople(page);
                    take(page);
                }
            } else {
                setTrouble(sentence(error));
            }
        }
    };

    const total = people?.total ?? 0;
    const select = (chosen: Person[], isOn: boolean, isAlone = false) =>
        setSelected(before => (isAlone ? Selection.nobody : before).with(chosen.map(person => person.id), isOn));
    const range = (to: number) => {
        const [from, end] = anchor.current < to ? [anchor.current, to] : [to, anchor.current];
        select(
            rows.current.slice(from, end + 1).filter((row): row is Person => row !== undefined),
            true,
            true,
        );
    };
    const selectAll = (isOn: boolean) =>
        setSelected(isOn && people ? Selection.allOf(people.result, total) : Selection.nobody);
    /** The people that an action on a row is meant for: those selected, or the row's alone. */
    const meant = (row: Person) => (selected.has(row.id) ? selected : Selection.of([row.id]));
    /** Whether the list is the one that was asked for last; until that one arrives, the previous one is shown. */
    const isCurrent = last.current?.text === text;
    const isGroup = query.in.startsWith("group:");
    /** The place whose own members are shown, and no others. */
    const from = isCurrent && isGroup && !query.deep ? query.in : "";

    const onKey = (event: KeyboardEvent, page: number) => {
        if ((event.ctrlKey || event.metaKey) && (event.key === "a" || event.key === "x")) {
            event.preventDefault();
            const present = rows.current[active];
            if (event.key === "a") {
                selectAll(true);
            } else if (present) {
                cut(selected.count > 0 ? selected : Selection.of([present.id]), from);
            }
        }
        if (event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        const row = rows.current[active];
        const move = (to: number) => {
            setActive(to);
            if (event.shiftKey) {
                range(to);
            } else {
                anchor.current = to;
            }
        };
        const actions: Record<string, () => void> = {
            ...steps(active, total, page, move),
            Enter: () => row && props.onOpen(row.id),
            " ": () => row && select([row], !selected.has(row.id)),
            F2: () => row && may("user/rename") && rename(row),
            ...(props.opened ? { Escape: () => props.onOpen(undefined) } : {}),
            Delete: () => row && may("user/delete") && void remove(selected.count > 0 ? selected : Selection.of([row.id])),
        };
        const action = actions[event.key];
        if (action) {
            event.preventDefault();
            action();
        }
    };

    const remove = async (chosen: Selection) => {
        if (await deletePeople(chosen)) {
            setSelected(Selection.nobody);
        }
    };
    const rename = (person: Person) =>
        askFor(
            t("user.rename", { name: person.login }),
            [
                { name: "login", label: t("user.newlogin"), value: person.login, required: true },
                { name: "password", label: t("user.renamepassword"), type: "password", help: t("password.rules") },
            ],
            t("rename"),
            async values =>
                (await change("user/rename", {
                    USER: `id:${person.id}`,
                    NEWLOGIN: values["login"] ?? "",
                    password: values["password"] || null,
                })) !== null,
        );
    const create = () =>
        askUser(isGroup ? ((isCurrent ? people?.path : undefined) ?? argumentOf(query.in)) : "", props.onOpen);

    /** What can be done with several people at once. */
    const actionsOn = (chosen: Selection): Action[] =>
        allowed([
            { command: "user/lock", label: t("people.lock"), act: () => void changePeopleOrSay("user/lock", chosen) },
            { command: "user/unlock", label: t("people.unlock"), act: () => void changePeopleOrSay("user/unlock", chosen) },
            { command: "user/move", label: `${t("move")}…`, act: () => askMove(chosen, from ? (people?.path ?? "") : "") },
            { command: "member/add", label: t("people.addto"), act: () => askAdd(chosen) },
            ...(query.in === ""
                ? []
                : [
                      {
                          command: "member/remove",
                          label: t("people.removefrom"),
                          act: () => void changePeopleOrSay("member/remove", chosen, { GROUP: argumentOf(query.in) }),
                      },
                  ]),
            { command: "role/add", label: t("people.role.add"), act: () => askRole(chosen, "add") },
            { command: "role/remove", label: t("people.role.remove"), act: () => askRole(chosen, "remove") },
            { command: "user/set", label: t("people.fields.open"), act: () => askFields(chosen) },
            { command: "user/password/set", label: t("passwords.open"), act: () => void askPasswords(chosen) },
            { command: "plan/assign", label: t("people.plan.assign"), act: () => askPlan(chosen, "assign") },
            { command: "plan/unassign", label: t("people.plan.unassign"), act: () => askPlan(chosen, "unassign") },
            { command: "user/delete", label: `${t("delete")}…`, keys: "Del", isDanger: true, act: () => void remove(chosen) },
        ]);
    /** What can be done without anybody. */
    const making: Action[] = [
        { command: "user/create", label: t("people.new"), keys: "n", act: create },
        { label: t("names.open"), act: () => askNames() },
    ];
    const onContext = (event: MouseEvent) => {
        const line = (event.target as Element).closest("[role=row]");
        // A key asks for that of the row that keys act on.
        const index = line ? Number(line.getAttribute("aria-rowindex")) - 2 : event.button === 2 ? -1 : active;
        const row = rows.current[index];
        if (!row || row["gone"]) {
            void openContext(event, () => making);
            return;
        }
        const isSelected = selected.has(row.id);
        const chosen = isSelected ? selected : Selection.of([row.id]);
        setActive(index);
        setSelected(chosen);
        const own: Action[] = [
            { label: t("generic.show"), keys: "Enter", act: () => props.onOpen(row.id) },
            { command: "user/rename", label: `${t("rename")}…`, keys: "F2", act: () => rename(row) },
        ];
        void openContext(
            event,
            () => [...(chosen.count === 1 ? own : []), ...actionsOn(chosen)],
            line ? null : document.getElementById(`person-${active}`),
        );
    };
    useKey("n", () => may("user/create") && create());

    const sorted = query.sort || "login";
    const header = (column: string) => {
        const isBy = sorted.replace("-", "") === column;
        const isDown = isBy && sorted.startsWith("-");
        return (
            <div
                key={column}
                role="columnheader"
                class={`cell ${column}`}
                aria-sort={isBy ? (isDown ? "descending" : "ascending") : "none"}
            >
                <button class="plain" onClick={() => props.onQuery({ sort: isBy && !isDown ? `-${column}` : column })}>
                    {t(`column.${column}` as "column.name")}
                    {isBy ? (isDown ? " ↓" : " ↑") : ""}
                </button>
            </div>
        );
    };

    return (
        <section ref={box} class="list panel" aria-label={t("people.list")}>
            <header>
                <nav class="crumbs" aria-label={t("people.list")}>
                    <a
                        href="/directory"
                        onClick={event => {
                            event.preventDefault();
                            void go("/directory");
                        }}
                    >
                        {t("everyone")}
                    </a>
                    {query.in !== "" &&
                        people?.trail?.map(step => (
                            <span key={step.key}>
                                {" / "}
                                <bdi>{step.name}</bdi>
                            </span>
                        ))}
                    {query.among !== "" && ` / ${t("names.crumb")}`}
                </nav>
                {isOutdated && (
                    <button class="link" onClick={() => setRenewals(before => before + 1)}>
                        {t("people.outdated")}
                    </button>
                )}
                <span class="total" role="status">
                    {people ? counted("people.count", total) : ""}
                </span>
            </header>
            <div class="bar">
                {selected.count > 0 ? (
                    <>
                        <strong role="status">{t("people.selected", { count: selected.count })}</strong>
                        {actionsOn(selected).map(({ label, isDanger, act }) => (
                            <button key={label} class={isDanger ? "danger" : ""} onClick={act}>
                                {label}
                            </button>
                        ))}
                        <button class="link" onClick={() => setSelected(Selection.nobody)}>
                            {t("people.clear")}
                        </button>
                    </>
                ) : (
                    <>
                        {may("user/create") && (
                            <button class="main" aria-keyshortcuts="n" onClick={create}>
                                <Icon name="plus" /> {t("people.new")}
                            </button>
                        )}
                        <label>
                            <input
                                type="checkbox"
                                checked={query.deep}
                                onChange={event => props.onQuery({ deep: event.currentTarget.checked })}
                            />
                            {t("people.deep")}
                        </label>
                        <select
                            aria-label={t("people.filter")}
                            value={query.trait}
                            onChange={event => props.onQuery({ trait: event.currentTarget.value })}
                        >
                            <option value="">{t("people.all")}</option>
                            {traits.map(trait => (
                                <option key={trait} value={trait}>
                                    {t(`trait.${trait}`)}
                                </option>
                            ))}
                        </select>
                        <button onClick={() => askNames()}>{t("names.open")}</button>
                    </>
                )}
            </div>
            <Trouble text={trouble} />
            <div class="grid" role="presentation">
                <Scroller
                    role="grid"
                    id="people"
                    label={t("people.list")}
                    count={total + 1}
                    lineHeight={kLine}
                    active={active + 1}
                    activeId={total > 0 ? `person-${active}` : undefined}
                    attributes={{ "aria-rowcount": total + 1, "aria-multiselectable": true }}
                    onKey={onKey}
                    onContextMenu={onContext}
                    onRest={(first, end) => {
                        const begin = Math.floor(Math.max(0, first - 1) / kPage) * kPage;
                        for (let offset = begin; offset <= end && offset < total; offset += kPage) {
                            void load(offset);
                        }
                    }}
                    line={(index, style) => {
                        if (index === 0) {
                            return (
                                <div key="head" class="row head" role="row" aria-rowindex={1} style={style}>
                                    <div class="cell mark" role="columnheader">
                                        <input
                                            type="checkbox"
                                            aria-label={t("people.selectall")}
                                            checked={selected.count > 0 && selected.count === total}
                                            onChange={event => selectAll(event.currentTarget.checked)}
                                        />
                                    </div>
                                    {columns.map(header)}
                                </div>
                            );
                        }
                        const number = index - 1;
                        const row = rows.current[number];
                        const isSelected = row !== undefined && selected.has(row.id);
                        return (
                            <div
                                key={number}
                                id={`person-${number}`}
                                class={`row${number === active ? " active" : ""}${row?.id === props.opened ? " opened" : ""}`}
                                role="row"
                                aria-rowindex={index + 1}
                                aria-selected={isSelected}
                                style={style}
                                draggable={row !== undefined && !row["gone"]}
                                onDragStart={event => {
                                    event.dataTransfer?.setData("text/plain", row?.login ?? "");
                                    row && carry({ people: meant(row), from });
                                }}
                                onDragEnd={() => carry(undefined)}
                                onClick={event => {
                                    setActive(number);
                                    if (event.shiftKey) {
                                        range(number);
                                    } else if (row) {
                                        anchor.current = number;
                                        event.ctrlKey ? select([row], !isSelected) : props.onOpen(row.id);
                                    }
                                }}
                            >
                                <div class="cell mark" role="gridcell" onClick={event => event.stopPropagation()}>
                                    {row && !row["gone"] && (
                                        <input
                                            type="checkbox"
                                            tabIndex={-1}
                                            aria-label={t("people.select", { name: row.login })}
                                            checked={isSelected}
                                            onChange={event => select([row], event.currentTarget.checked)}
                                        />
                                    )}
                                </div>
                                {row?.["gone"] ? (
                                    <div class="cell gone" role="gridcell">
                                        {t("people.gone")}
                                    </div>
                                ) : (
                                    columns.map(column => (
                                        <div key={column} class={`cell ${column}`} role="gridcell">
                                            {column === "name" && row?.["locked"] && (
                                                <span class="locked" title={t("locked")}>
                                                    <Icon name="lock" />
                                                    <span class="hidden">{t("locked")} </span>
                                                </span>
                                            )}
                                            <bdi>{row?.[column] ?? ""}</bdi>
                                        </div>
                                    ))
                                )}
                            </div>
                        );
                    }}
                />
                {people && total === 0 && <p class="empty">{t(query.q ? "people.nomatch" : "people.none")}</p>}
            </div>
        </section>
    );
}

