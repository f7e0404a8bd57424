// What can be done with what is pointed at, as a menu beside it.
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { listed, may } from "./api";
import { t } from "./texts";

export interface Action {
    /** The command that it takes; offered to who may run that. */
    command?: string;
    label: string;
    /** The key that does the same. */
    keys?: string;
    isDanger?: boolean;
    act: () => void;
}

export const allowed = (actions: Action[]) => actions.filter(({ command }) => !command || may(command));

interface Open {
    key: number;
    actions: Action[];
    x: number;
    y: number;
}

let show: (actions: Action[], x: number, y: number) => void = () => {};

/**
 * Opens the menu that an event asks for, by the pointer or a key, as soon as it is known what may be done.
 * @param line  of what keys act on, where the event is of none.
 */
export async function openContext(event: MouseEvent, actionsOf: () => Action[], line?: Element | null): Promise<void> {
    event.preventDefault();
    await listed;
    const actions = allowed(actionsOf());
    const box = line?.getBoundingClientRect();
    if (actions.length > 0) {
        box ? show(actions, box.left + 40, box.bottom) : show(actions, event.clientX, event.clientY);
    }
}

function Menu(props: Open & { onClose: () => void }) {
    const { actions } = props;
    const menu = useRef<HTMLDivElement>(null);
    useLayoutEffect(() => {
        const element = menu.current as HTMLDivElement;
        element.showPopover();
        element.style.left = `${Math.max(0, Math.min(props.x, innerWidth - element.offsetWidth))}px`;
        element.style.top = `${Math.max(0, Math.min(props.y, innerHeight - element.offsetHeight))}px`;
        (element.firstElementChild as HTMLElement).focus();
    }, []);
    const onKey = (event: KeyboardEvent) => {
        const items = [...(menu.current as HTMLDivElement).children] as HTMLElement[];
        const at = items.indexOf(document.activeElement as HTMLElement);
        const to = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: -1 }[event.key];
        const following = [...items.slice(at + 1), ...items.slice(0, at)];
        const isLetter = event.key.length === 1 && event.key !== " ";
        const item =
            to !== undefined
                ? items.at(to % items.length)
                : isLetter
                  ? following.find(one => one.textContent?.toLowerCase().startsWith(event.key.toLowerCase()))
                  : undefined;
        if (item || isLetter || event.key === "Tab") {
            event.preventDefault();
            event.stopPropagation();
            item?.focus();
        }
        event.key === "Tab" && menu.current?.hidePopover();
    };
    return (
        <div
            ref={menu}
            popover="auto"
            role="menu"
            class="popup context"
            aria-label={t("generic.do")}
            onToggle={event => event.newState === "closed" && props.onClose()}
            onKeyDown={onKey}
            onContextMenu={event => event.preventDefault()}
        >
            {actions.map(action => (
                <button
                    key={action.label}
                    role="menuitem"
                    tabIndex={-1}
                    class={action.isDanger ? "danger" : ""}
                    onClick={() => {
                        // The focus goes back to where it was before anything else takes it.
                        menu.current?.hidePopover();
                        action.act();
                    }}
                >
                    {action.label}
                    {action.keys && (
                        <>
                            {" "}
                            <kbd>{action.keys}</kbd>
                        </>
                    )}
                </button>
            ))}
        </div>
    );
}

/** The one that is open. */
export function ContextMenu() {
    const [open, setOpen] = useState<Open>();
    show = (actions, x, y) => setOpen(before => ({ key: (before?.key ?? 0) + 1, actions, x, y }));
    return open && <Menu {...open} onClose={() => setOpen(before => (before?.key === open.key ? undefined : before))} />;
}
